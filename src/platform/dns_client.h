// What the engine asks of a DNS server: the name of one address, at a server that the call names,
// without the system's resolver and its files. One query a look-up, sent once, 5 seconds at most.
// A DnsRequest is the look-up under way; who holds it owns it, and letting go of it cancels it.
// Outcomes are told by number, as the program shows them; names are bytes that a stranger chose.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr int kDnsTimeoutMs = 5000;
inline constexpr std::uint16_t kDnsPort = 53;

enum DnsNumber : int {
  kDnsName = 0,
  // Other failures.
  kDnsBadServer = 25301,   // the server's text is no address
  kDnsBadAddress = 25302,  // the address to look up is none
  kDnsUnreachable = 25303,
  kDnsServerFailed = 25304,
  kDnsRefused = 25305,
  kDnsBadReply = 25306,
  kDnsNoMeans = 25307,  // this machine could not ask
  // There is no record.
  kDnsNoHost = 25311,
  kDnsNoRecord = 25320,
  kDnsNoName = 25321,
  kDnsTimedOut = 25324,
};

enum class DnsOutcome { name, no_record, timed_out, failed };

struct DnsAnswer {
  int number = kDnsName;
  std::string name;         // 1 to 253 bytes of any value; empty unless the outcome is a name
  std::string description;  // of the failure

  [[nodiscard]] DnsOutcome outcome() const;
};

// The answer that tells of a failure, with the description that belongs to its number.
DnsAnswer dns_failure(int number);

struct DnsServer {
  std::string address;  // dotted
  std::uint16_t port = kDnsPort;
};
// Reads "address" or "address:port"; port 1 to 65535.
std::optional<DnsServer> read_dns_server(std::string_view text);

class DnsRequest {
 public:
  virtual ~DnsRequest() = default;
};

class DnsClient {
 public:
  using OnAnswer = std::function<void(const DnsAnswer& answer)>;

  virtual ~DnsClient() = default;

  // Calls back once, never inside this call, unless the request is destroyed before; it may be
  // destroyed inside the callback. A server text that cannot be read asks nobody and is answered
  // with a failure, as is every error of the machine.
  virtual std::unique_ptr<DnsRequest> look_up(const std::string& server, const std::string& address,
                                              OnAnswer on_answer) = 0;
};

}  // namespace velmora
