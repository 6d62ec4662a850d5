// The names of hosts on a simulated machine: a cache, a scripted DNS, and what asks it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "net/dns_auto_update.h"
#include "net/dns_lookups.h"
#include "net/dns_names.h"
#include "net/dns_scan.h"
#include "net/host_cache.h"
#include "platform/sim/sim_world.h"
#include "support/doubles.h"

namespace velmora::sim {

struct DnsRig {
  explicit DnsRig(const std::string& server = "10.0.0.53") { form.dns_ser.set_text(server); }

  // Fills the cache, first row first; "ADDRESS" or "ADDRESS NAME", the names dated as given.
  void fill(const std::vector<std::string>& hosts, LocalTime date = kNever) {
    std::vector<CacheHost> rows;
    for (const std::string& text : hosts) {
      CacheHost row;
      const std::size_t blank = text.find(' ');
      row.address = text.substr(0, blank);
      if (blank != std::string::npos) row.host_name = text.substr(blank + 1);
      row.date_dns = date;
      rows.push_back(row);
    }
    cache.replace(rows);
  }
  std::vector<std::string> cached_names() {
    std::vector<std::string> found;
    for (std::size_t row = 1; row <= cache.rows(); ++row) found.push_back(cache.row(row).host_name);
    return found;
  }
  const std::string& status() { return form.dnsStat.text(); }

  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  EventLoop& loop = host.platform().loop;
  SimDnsClient& dns = host.dns();
  Form form;
  Lines log;
  FilterArray filter;
  HostCache cache{loop, filter, log};
  DnsLookups lookups{host.dns(), form};
  DnsNames names{cache, lookups, log};
};

}  // namespace velmora::sim
