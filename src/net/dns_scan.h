// The scan that a person starts for the names of the cached hosts: one row of the host cache a tick
// of dnsTimer, every row whose name is missing or was looked up more than 10 days ago. It wires the
// buttons StartDNS and stopDNS and shows its progress in dnsStat.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "form/form.h"
#include "net/dns_lookups.h"
#include "net/host_cache.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

class DnsScan {
 public:
  DnsScan(EventLoop& loop, Form& form, HostCache& cache, DnsLookups& lookups, DebugLog& log);

  // Sets dns_stop: a scan that runs ends at its next step.
  void stop() { dns_stop_ = true; }

 private:
  void start();
  void dnsTimer_Timer();
  void find_row();
  void answered(const std::string& address, const DnsAnswer& answer);
  bool judge(const std::string& address, const DnsAnswer& answer);
  void show_row(const std::string& address, const std::string& outcome);
  [[nodiscard]] std::size_t row_of(const std::string& address) const;

  EventLoop& loop_;
  Form& form_;
  HostCache& cache_;
  DnsLookups& lookups_;
  DebugLog& log_;
  std::unique_ptr<Timer> dnsTimer_;
  bool dns_stop_ = false;
  bool asking_ = false;       // dnsTimer is off meanwhile
  std::size_t cursor_ = 0;    // row of the cache; 0 reads as 1
  int retries_ = 0;           // time-outs since the last success, across rows and scans
  std::size_t resolved_ = 0;  // in this scan
};

}  // namespace velmora
