#include "platform/uv/uv_dns_client.h"

#include <utility>

#include "platform/uv/uv_address.h"
#include "platform/uv/uv_dns_request.h"

namespace velmora::uv {

UvDnsClient::UvDnsClient(UvLoop& loop, std::string local_address)
    : loop_(loop), local_address_(std::move(local_address)) {}

std::unique_ptr<DnsRequest> UvDnsClient::look_up(const std::string& server,
                                                 const std::string& address, OnAnswer on_answer) {
  auto request = std::make_unique<UvDnsRequest>(loop_, std::move(on_answer));
  const auto asked = read_dns_server(server);
  if (!asked) {
    request->answer_later(dns_failure(kDnsBadServer));
  } else if (!parse_address(address, 0)) {
    request->answer_later(dns_failure(kDnsBadAddress));
  } else {
    request->ask(*asked, address, local_address_);
  }
  return request;
}

}  // namespace velmora::uv
