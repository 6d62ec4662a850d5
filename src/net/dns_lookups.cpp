#include "net/dns_lookups.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"

namespace velmora {

void DnsLookups::ask(const std::string& address, Done done) {
  if (Lookup* same = find(address)) {
    same->done.push_back(std::move(done));
    return;
  }
  if (waiting_.size() >= kMostLookupsWaiting) throw PlatformError(Errc::out_of_memory);
  waiting_.push_back({address, {}, nullptr});
  waiting_.back().done.push_back(std::move(done));
  start_waiting(false);
}

void DnsLookups::cancel() {
  waiting_.clear();
  under_way_.clear();
}

DnsLookups::Lookup* DnsLookups::find(const std::string& address) {
  const auto is_it = [&](const Lookup& lookup) { return lookup.address == address; };
  const auto running = std::find_if(under_way_.begin(), under_way_.end(), is_it);
  if (running != under_way_.end()) return &*running;
  const auto waiting = std::find_if(waiting_.begin(), waiting_.end(), is_it);
  return waiting != waiting_.end() ? &*waiting : nullptr;
}

// Who asks now gets the error of a look-up that cannot be started; who has waited gets an answer.
void DnsLookups::start_waiting(bool have_waited) {
  while (!waiting_.empty() && under_way_.size() < kMostLookupsAtOnce) {
    Lookup lookup = std::move(waiting_.front());
    waiting_.pop_front();
    try {
      lookup.request = client_.look_up(
          form_.dns_ser.text(), lookup.address,
          [this, address = lookup.address](const DnsAnswer& answer) { answered(address, answer); });
      under_way_.push_back(std::move(lookup));
    } catch (const std::exception&) {
      if (!have_waited) throw;
      for (const Done& done : lookup.done) done({kDnsNoMeans, {}, {}});
    }
  }
}

void DnsLookups::answered(const std::string& address, const DnsAnswer& answer) {
  const auto at = std::find_if(under_way_.begin(), under_way_.end(),
                               [&](const Lookup& lookup) { return lookup.address == address; });
  if (at == under_way_.end()) return;
  const Lookup lookup = std::move(*at);
  under_way_.erase(at);
  start_waiting(true);
  for (const Done& done : lookup.done) done(answer);
}

}  // namespace velmora
