#include "platform/sim/sim_dns_client.h"

#include <algorithm>
#include <utility>

namespace velmora::sim {
namespace {

class SimDnsRequest : public DnsRequest {
 public:
  SimDnsRequest(SimLoop& loop, DnsAnswer answer, int delay_ms,
                std::shared_ptr<std::size_t> under_way, DnsClient::OnAnswer on_answer)
      : answer_(std::move(answer)),
        under_way_(std::move(under_way)),
        on_answer_(std::move(on_answer)),
        timer_(loop.make_timer(delay_ms, [this] { give(); })) {
    ++*under_way_;
    timer_->set_enabled(true);
  }
  ~SimDnsRequest() override { end(); }
  SimDnsRequest(const SimDnsRequest&) = delete;
  SimDnsRequest& operator=(const SimDnsRequest&) = delete;

 private:
  void end() {
    if (ended_) return;
    ended_ = true;
    --*under_way_;
  }
  void give() {
    timer_->set_enabled(false);
    end();
    const DnsAnswer answer = answer_;
    const DnsClient::OnAnswer on_answer = std::move(on_answer_);
    on_answer(answer);
  }

  DnsAnswer answer_;
  std::shared_ptr<std::size_t> under_way_;
  DnsClient::OnAnswer on_answer_;
  std::unique_ptr<Timer> timer_;
  bool ended_ = false;
};

}  // namespace

void SimDnsClient::script_name(const std::string& address, const std::string& name, int delay_ms) {
  scripts_[address] = {DnsAnswer{kDnsName, name, {}}, delay_ms};
}

void SimDnsClient::script(const std::string& address, int number, int delay_ms) {
  scripts_[address] = {dns_failure(number), delay_ms};
}

void SimDnsClient::script_others(int number, int delay_ms) {
  others_ = {dns_failure(number), delay_ms};
}

std::vector<std::string> SimDnsClient::addresses_asked() const {
  std::vector<std::string> addresses;
  for (const DnsQuery& query : queries_) addresses.push_back(query.address);
  return addresses;
}

std::unique_ptr<DnsRequest> SimDnsClient::look_up(const std::string& server,
                                                  const std::string& address, OnAnswer on_answer) {
  Script script{dns_failure(kDnsBadServer), 0};
  auto under_way = std::make_shared<std::size_t>(0);  // what asks nobody does not count
  if (read_dns_server(server)) {
    const auto found = scripts_.find(address);
    script = found != scripts_.end() ? found->second : others_;
    if (script.delay_ms > kDnsTimeoutMs) script = {dns_failure(kDnsTimedOut), kDnsTimeoutMs};
    queries_.push_back({loop_.now_ms(), server, address});
    under_way = under_way_;
  }
  auto request = std::make_unique<SimDnsRequest>(loop_, script.answer, script.delay_ms, under_way,
                                                 std::move(on_answer));
  most_under_way_ = std::max(most_under_way_, *under_way_);
  return request;
}

}  // namespace velmora::sim
