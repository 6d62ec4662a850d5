// The control socket of the real machine: a Unix-domain stream socket in the profile folder that
// only its owner can connect to.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/control_channel.h"
#include "platform/uv/uv_acceptor.h"
#include "platform/uv/uv_control_client.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {

class UvControlChannel : public ControlChannel,
                         private AcceptorEvents,
                         private ControlClientEvents,
                         private TurnEnd {
 public:
  UvControlChannel(UvLoop& loop, const std::string& profile);
  ~UvControlChannel() override;  // what has not left is lost
  UvControlChannel(const UvControlChannel&) = delete;
  UvControlChannel& operator=(const UvControlChannel&) = delete;

  void open(const std::string& name, ControlChannelEvents& events) override;
  void send_line(std::uint64_t client, std::string_view line) override;
  void close() override;

  // Whether lines to clients that ended are still leaving.
  [[nodiscard]] bool parting() const { return !parting_.empty(); }

 private:
  [[nodiscard]] bool may_accept() const override { return true; }
  void on_accepted(Descriptor connection) override;
  void on_line(std::uint64_t client, std::string_view line) override;
  void on_end(std::uint64_t client) override;
  void on_turn_end() override;
  void part(std::uint64_t client);

  UvLoop& loop_;
  std::string profile_;
  std::string path_;
  ControlChannelEvents* events_ = nullptr;
  std::unique_ptr<UvAcceptor> acceptor_;
  std::uint64_t last_number_ = 0;
  std::map<std::uint64_t, std::unique_ptr<UvControlClient>> clients_;
  std::vector<std::unique_ptr<UvControlClient>> parting_;
};

}  // namespace velmora::uv
