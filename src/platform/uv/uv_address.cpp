#include "platform/uv/uv_address.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <uv.h>

#include <array>

namespace velmora::uv {
namespace {

EndpointText end_of(int fd, int (*ask)(int, sockaddr*, socklen_t*)) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (ask(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
  return text_of(address);
}

}  // namespace

std::optional<sockaddr_in> parse_address(const std::string& dotted, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  if (dotted.find('\0') != std::string::npos) return std::nullopt;
  if (inet_pton(AF_INET, dotted.c_str(), &address.sin_addr) != 1) return std::nullopt;
  return address;
}

bool looks_dotted(const std::string& host) {
  return host.find_first_not_of("0123456789.") == std::string::npos;
}

bool can_be_reached(const sockaddr_in& address) {
  const std::uint32_t first = ntohl(address.sin_addr.s_addr) >> 24U;
  return first != 0 && first < 224 && address.sin_port != 0;
}

EndpointText text_of(const sockaddr_in& address) {
  std::array<char, INET_ADDRSTRLEN> text{};
  inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
  return {text.data(), ntohs(address.sin_port)};
}

EndpointText local_end(int fd) {
  return end_of(fd, [](int s, sockaddr* a, socklen_t* n) { return getsockname(s, a, n); });
}

EndpointText peer_end(int fd) {
  return end_of(fd, [](int s, sockaddr* a, socklen_t* n) { return getpeername(s, a, n); });
}

std::string primary_address() {
  std::string found = "127.0.0.1";
  uv_interface_address_t* interfaces = nullptr;
  int count = 0;
  if (uv_interface_addresses(&interfaces, &count) != 0) return found;
  for (int i = count - 1; i >= 0; --i) {
    const uv_interface_address_t& interface = interfaces[i];
    if (interface.is_internal != 0 || interface.address.address4.sin_family != AF_INET) continue;
    found = text_of(interface.address.address4).address;
  }
  uv_free_interface_addresses(interfaces, count);
  return found;
}

}  // namespace velmora::uv
