#include "platform/uv/uv_listener.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <utility>

#include "platform/uv/uv_address.h"
#include "platform/uv/uv_network.h"

namespace velmora::uv {
namespace {

Descriptor listen_on(const std::string& bind_address, std::uint16_t port, int backlog) {
  Descriptor fd(checked(
      [] { return ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP); }));
  const int on = 1;
  checked([&] { return setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on); });
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  if (const auto chosen = parse_address(bind_address, port)) address = *chosen;
  checked([&] {
    return ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  });
  checked([&] { return ::listen(fd.get(), backlog); });
  return fd;
}

}  // namespace

UvListener::UvListener(UvNetwork& network, std::uint16_t port, int backlog, ListenerEvents& events)
    : network_(network),
      events_(events),
      acceptor_(std::make_unique<UvAcceptor>(network.loop(),
                                             listen_on(network.bind_address(), port, backlog),
                                             static_cast<AcceptorEvents&>(*this))),
      local_port_(local_end(acceptor_->descriptor()).port) {
  network_.listener_opened();
}

UvListener::~UvListener() { network_.listener_closed(); }

bool UvListener::may_accept() const { return network_.has_descriptor_to_spare(); }

// Hands over as its last act: the receiver may destroy the listener.
void UvListener::on_accepted(Descriptor connection) {
  auto socket = network_.adopt(std::move(connection));
  if (socket != nullptr) events_.on_accept(std::move(socket));
}

}  // namespace velmora::uv
