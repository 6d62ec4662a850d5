// IPv4 addresses between dotted text and the system's form.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <string>

namespace velmora::uv {

// Four decimal numbers and nothing else.
std::optional<sockaddr_in> parse_address(const std::string& dotted, std::uint16_t port);
// Only digits and dots: never a name to ask a resolver for.
bool looks_dotted(const std::string& host);
// Whether anybody can have it: not 0.x, not 224.x and up, not port 0.
bool can_be_reached(const sockaddr_in& address);

struct EndpointText {
  std::string address;
  std::uint16_t port = 0;
};
EndpointText text_of(const sockaddr_in& address);
EndpointText local_end(int fd);  // empty if there is none
EndpointText peer_end(int fd);

// The first address of an interface that is up and no loopback, else 127.0.0.1.
std::string primary_address();

}  // namespace velmora::uv
