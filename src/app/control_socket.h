// The control socket of one servent: joins the control protocol to the platform's local channel
// "control.sock". It is opened as the last step of start-up, so that who can connect finds the
// servent ready. It owns neither the form nor the channel.
#pragma once

#include <cstdint>
#include <string_view>

#include "app/control_protocol.h"
#include "platform/control_channel.h"

namespace velmora {

class ControlSocket : private ControlChannelEvents {
 public:
  // `on_quit` runs in the turn after a client asked for the end of the program.
  ControlSocket(ControlRegistry& form, EventLoop& loop, ControlChannel& channel, Handler on_quit);
  ~ControlSocket() override;
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;

  void open();   // raises a PlatformError
  void close();  // may be called again; the destructor does it

 private:
  void on_client_line(std::uint64_t client, std::string_view line) override;
  void on_client_gone(std::uint64_t client) override;

  ControlChannel& channel_;
  ControlProtocol protocol_;
  bool open_ = false;
};

}  // namespace velmora
