// The simulated DNS: answers by script, per address, after a delay in virtual time. A look-up of an
// address without a script finds no host. It takes server texts as the real one does, but every
// server that can be read knows the same script.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/dns_client.h"
#include "platform/sim/sim_loop.h"

namespace velmora::sim {

struct DnsQuery {
  std::int64_t time_ms = 0;
  std::string server;
  std::string address;
};

class SimDnsClient : public DnsClient {
 public:
  explicit SimDnsClient(SimLoop& loop) : loop_(loop) {}

  // What look-ups of the address find from now on. An answer slower than 5 seconds is a time-out.
  void script_name(const std::string& address, const std::string& name, int delay_ms = 1);
  void script(const std::string& address, int number, int delay_ms = 1);  // a failure's number
  void script_silence(const std::string& address) { script(address, kDnsTimedOut, kDnsTimeoutMs); }
  // For addresses without a script of their own.
  void script_others(int number, int delay_ms = 1);

  [[nodiscard]] const std::vector<DnsQuery>& queries() const { return queries_; }  // that were sent
  [[nodiscard]] std::vector<std::string> addresses_asked() const;
  [[nodiscard]] std::size_t under_way() const { return *under_way_; }
  [[nodiscard]] std::size_t most_under_way() const { return most_under_way_; }

  std::unique_ptr<DnsRequest> look_up(const std::string& server, const std::string& address,
                                      OnAnswer on_answer) override;

 private:
  struct Script {
    DnsAnswer answer;
    int delay_ms = 1;
  };

  SimLoop& loop_;
  std::map<std::string, Script> scripts_;
  Script others_{dns_failure(kDnsNoHost), 1};
  std::vector<DnsQuery> queries_;
  std::shared_ptr<std::size_t> under_way_ = std::make_shared<std::size_t>(0);
  std::size_t most_under_way_ = 0;
};

}  // namespace velmora::sim
