#include "app/control_socket.h"

#include <string>
#include <utility>

#include "platform/trap.h"

namespace velmora {

ControlSocket::ControlSocket(ControlRegistry& form, EventLoop& loop, ControlChannel& channel,
                             Handler on_quit)
    : channel_(channel),
      protocol_(
          form, loop,
          [this](std::uint64_t client, std::string_view line) {
            if (open_) channel_.send_line(client, line);
          },
          std::move(on_quit)) {}

ControlSocket::~ControlSocket() { close(); }

void ControlSocket::open() {
  channel_.open("control.sock", *this);
  open_ = true;
}

void ControlSocket::close() {
  if (!open_) return;
  open_ = false;
  channel_.close();
}

void ControlSocket::on_client_line(std::uint64_t client, std::string_view line) {
  // An answer that finds no memory is dropped.
  trapped({}, [&] {
    const std::string answer = protocol_.handle(client, line);
    if (open_ && !answer.empty()) channel_.send_line(client, answer);
  });
}

void ControlSocket::on_client_gone(std::uint64_t client) { protocol_.forget(client); }

}  // namespace velmora
