#include "platform/dns_client.h"

#include <charconv>

namespace velmora {
namespace {

// A whole number of digits only, nothing around it.
std::optional<std::uint16_t> read_number(std::string_view text, int least, int most) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (value < least || value > most || text.front() == '-') return std::nullopt;
  return static_cast<std::uint16_t>(value);
}

bool is_dotted(std::string_view text) {
  for (int part = 1; part <= 4; ++part) {
    const std::size_t dot = part < 4 ? text.find('.') : text.size();
    if (dot > 3) return false;  // too long, or no dot at all
    if (!read_number(text.substr(0, dot), 0, 255)) return false;
    text.remove_prefix(part < 4 ? dot + 1 : dot);
  }
  return true;
}

const char* description_of(int number) {
  switch (number) {
    case kDnsBadServer:
      return "Not a DNS server's address";
    case kDnsBadAddress:
      return "Not an address to look up";
    case kDnsUnreachable:
      return "Could not contact the DNS server";
    case kDnsServerFailed:
      return "The DNS server failed";
    case kDnsRefused:
      return "The DNS server refused";
    case kDnsBadReply:
      return "Misformatted DNS reply";
    case kDnsNoHost:
      return "Host not found";
    case kDnsNoRecord:
      return "No DNS record";
    case kDnsNoName:
      return "The DNS record has no name";
    case kDnsTimedOut:
      return "The DNS server did not answer in time";
    default:
      return "DNS look-up failed";
  }
}

}  // namespace

DnsOutcome DnsAnswer::outcome() const {
  switch (number) {
    case kDnsName:
      return DnsOutcome::name;
    case kDnsNoHost:
    case kDnsNoRecord:
    case kDnsNoName:
      return DnsOutcome::no_record;
    case kDnsTimedOut:
      return DnsOutcome::timed_out;
    default:
      return DnsOutcome::failed;
  }
}

DnsAnswer dns_failure(int number) { return {number, {}, description_of(number)}; }

std::optional<DnsServer> read_dns_server(std::string_view text) {
  DnsServer server;
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos) {
    const auto port = read_number(text.substr(colon + 1), 1, 65535);
    if (!port) return std::nullopt;
    server.port = *port;
  }
  const std::string_view address = text.substr(0, colon);
  if (!is_dotted(address)) return std::nullopt;
  server.address = address;
  return server;
}

}  // namespace velmora
