// The control socket of one simulated host: a test speaks as one of its clients and reads what is
// sent back. A client is there from its first line on.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/control_channel.h"
#include "platform/event_loop.h"

namespace velmora::sim {

class SimControl : public ControlChannel {
 public:
  explicit SimControl(EventLoop& loop) : loop_(loop) {}

  void open(const std::string& name, ControlChannelEvents& events) override;
  void send_line(std::uint64_t client, std::string_view line) override;
  void close() override;

  // What tests do. Speaking while the channel is not open raises "Not connected".
  // Speaks one line (without its end) and returns the lines that were sent back meanwhile.
  std::vector<std::string> say(std::string_view line, std::uint64_t client = 1);
  // The lines sent to the client at other times (notices), and forgets them.
  std::vector<std::string> take(std::uint64_t client = 1);
  void leave(std::uint64_t client = 1);  // the client hangs up
  [[nodiscard]] bool is_open() const { return events_ != nullptr; }
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  struct Client {
    std::vector<std::string> lines;
    std::size_t bytes = 0;
  };
  void drop(std::uint64_t client);

  EventLoop& loop_;
  std::string name_;
  ControlChannelEvents* events_ = nullptr;
  std::map<std::uint64_t, Client> clients_;
};

}  // namespace velmora::sim
