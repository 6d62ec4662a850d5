// The reading of a DNS server's reply to a question for the name of an address. Bytes in, answer
// out; the reply may be any bytes, and the work it causes is bounded. Which reply belongs to which
// question is not settled here.
#pragma once

#include <string>
#include <string_view>

#include "platform/dns_client.h"

namespace velmora {

// The name under which the record of a dotted address stands: "4.3.2.1.in-addr.arpa".
std::string dns_reverse_name(const std::string& address);

// The first name that the reply gives for the reverse name; aliases on the way are followed. The
// labels' bytes are kept as they are, whatever they are.
DnsAnswer read_dns_reply(std::string_view reply, std::string_view reverse_name);

}  // namespace velmora
