// The DNS client of the real machine, c-ares joined to libuv's loop. It reads no file of the
// system's resolver and asks no server but the one named in the call.
#pragma once

#include <memory>
#include <string>

#include "platform/dns_client.h"

namespace velmora::uv {

class UvLoop;

class UvDnsClient : public DnsClient {
 public:
  // Queries leave from the local address; empty means any. The loop outlives every request.
  UvDnsClient(UvLoop& loop, std::string local_address);

  std::unique_ptr<DnsRequest> look_up(const std::string& server, const std::string& address,
                                      OnAnswer on_answer) override;

 private:
  UvLoop& loop_;
  std::string local_address_;
};

}  // namespace velmora::uv
