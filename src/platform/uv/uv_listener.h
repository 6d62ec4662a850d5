// A listening TCP port of the real network.
#pragma once

#include <memory>
#include <string>

#include "platform/network.h"
#include "platform/uv/uv_acceptor.h"

namespace velmora::uv {

class UvNetwork;

class UvListener : public Listener, private AcceptorEvents {
 public:
  UvListener(UvNetwork& network, std::uint16_t port, int backlog, ListenerEvents& events);
  ~UvListener() override;
  UvListener(const UvListener&) = delete;
  UvListener& operator=(const UvListener&) = delete;

  void set_accepting(bool accepting) override { acceptor_->set_accepting(accepting); }
  [[nodiscard]] std::uint16_t local_port() const override { return local_port_; }

 private:
  [[nodiscard]] bool may_accept() const override;
  void on_accepted(Descriptor connection) override;

  UvNetwork& network_;
  ListenerEvents& events_;
  std::unique_ptr<UvAcceptor> acceptor_;
  std::uint16_t local_port_ = 0;
};

}  // namespace velmora::uv
