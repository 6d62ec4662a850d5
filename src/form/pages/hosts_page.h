// The page "Hosts": connections that stand, hosts that are known, and their names.
#pragma once

#include "form/control.h"

namespace velmora {

struct HostsPage {
  explicit HostsPage(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::hosts;

 public:
  ListView lHosts{form_,
                  "lHosts",
                  page,
                  "Currently connected",
                  "DoubleClick to disconnect a host.",
                  {"Hosts", "Dir", "Sent/Recv/Drop", "Stat", "Lport", "Sock", "Buff"}};
  TextField new_host{form_, "new_host", page, "New host IP",
                     "Type a new host IP & Enter key to connect."};
  TextField max_out_host{form_, "max_out_host", page, "Max Out", "Max Outbound connections.", "2"};
  TextField max_in_host{
      form_, "max_in_host", page, "Max In", "Max Inbound connections. Others will be refused.",
      "2"};
  Button connect_auto{form_, "connect_auto", page, "Connect",
                      "Connects to several hosts until the max Outgoing limit is reached"};
  CheckBox connect_dns{form_, "connect_dns", page, "Connect by Dns",
                       "Connect to a host by its DNS name, if it's known."};
  ListView lcache{form_,
                  "lcache",
                  page,
                  "Available hosts",
                  "DoubleClick to connect to a host.",
                  {"Hosts", "Files", "Size Kb", "Hop", "TTL", "Sock"}};
  Button more_cache{form_, "more_cache", page, "More",
                    "Find more hosts by Pinging a host in the currently connected list."};
  Button remove_cache{form_, "remove_cache", page, "Remove", "Remove the selected host."};
  Button clear_cache{form_, "clear_cache", page, "Clear all", "Remove all available hosts."};
  Button help_hosts{form_, "help_hosts", page, "?", "Help on hosts"};

  CheckBox show_dns{form_, "show_dns", page, "Show Dns", "Show DNS names instead of IPs."};
  Button StartDNS{form_, "StartDNS", page, "Start Dns", "Find the DNS names of available hosts."};
  Button stopDNS{form_, "stopDNS", page, "Stop Dns", "Stop finding DNS names."};
  Label dnsStat{form_, "dnsStat", page, "DNS Look-up Status", "What the DNS look-up is doing."};
  Progress dns_progress{form_, "dns_progress", page, "DNS scan",
                        "How far the scan of available hosts is."};
};

}  // namespace velmora
