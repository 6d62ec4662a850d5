// The reply of a DNS server, which may be anything.
#include "platform/dns_reply.h"

#include "fuzzed_parts.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  const std::string_view reply(reinterpret_cast<const char*>(data), size);
  const DnsAnswer answer = read_dns_reply(reply, dns_reverse_name("1.2.3.4"));
  require((answer.outcome() == DnsOutcome::name) == !answer.name.empty(), "a name is there or not");
  require(answer.name.size() <= 253, "a name has its most");
  require(answer.name.empty() == !answer.description.empty(), "a failure is described");
  const auto server = read_dns_server(reply);
  require(!server || server->port > 0, "a server has a port");
  return 0;
}
