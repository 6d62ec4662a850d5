#include "platform/sim/sim_internet.h"

#include <array>
#include <charconv>

#include "platform/error.h"
#include "platform/sim/sim_listening_port.h"

namespace velmora::sim {
namespace {

constexpr std::uint16_t kFirstEphemeral = 49152;
constexpr std::uint16_t kEphemeralPorts = 16384;

// The first number of a dotted address; nothing if the text is not four numbers of 0 to 255.
std::optional<int> first_octet(const std::string& text) {
  std::array<int, 4> octets{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < octets.size(); ++i) {
    if (i > 0 && (at == end || *at++ != '.')) return std::nullopt;
    const auto [after, error] = std::from_chars(at, end, octets.at(i));
    if (error != std::errc() || *at == '-' || octets.at(i) > 255) return std::nullopt;
    at = after;
  }
  if (at != end) return std::nullopt;
  return octets[0];
}

}  // namespace

std::optional<std::string> Internet::resolve(const std::string& host) const {
  const auto found = names.find(host);
  const std::string& address = found == names.end() ? host : found->second;
  const auto first = first_octet(address);
  if (!first || *first == 0 || *first >= 224) return std::nullopt;
  return address;
}

std::shared_ptr<ListeningPort> Internet::listen(const std::string& address, std::uint16_t port,
                                                int backlog) {
  if (port == 0) port = ephemeral_port(address);
  if (listening(address, port)) throw PlatformError(Errc::address_in_use);
  auto made = std::make_shared<ListeningPort>(*this, address, port, backlog);
  ports_[{address, port}] = made;
  addresses.insert(address);
  return made;
}

std::shared_ptr<ListeningPort> Internet::listening(const std::string& address,
                                                   std::uint16_t port) const {
  const auto found = ports_.find({address, port});
  if (found == ports_.end()) return nullptr;
  auto open = found->second.lock();
  return open && !open->closed() ? open : nullptr;
}

std::uint16_t Internet::ephemeral_port(const std::string& address) {
  std::uint16_t& used = ephemeral_used_[address];
  for (int tries = 0; tries < kEphemeralPorts; ++tries) {
    const auto port = static_cast<std::uint16_t>(kFirstEphemeral + used);
    used = static_cast<std::uint16_t>((used + 1) % kEphemeralPorts);
    if (!listening(address, port)) return port;
  }
  throw PlatformError(Errc::address_in_use);
}

}  // namespace velmora::sim
