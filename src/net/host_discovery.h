// How a person finds and leaves hosts by hand: a typed address (new_host), the double click in
// lcache that connects to a known host, the "More" button (more_cache) that pings one connected
// host at a time, and the double click in lHosts that ends a connection. It wires these controls;
// the connections do the work.
#pragma once

#include <cstddef>
#include <functional>

#include "form/form.h"
#include "net/host_cache.h"
#include "net/message_connections.h"
#include "net/originator.h"
#include "platform/debug_log.h"

namespace velmora {

class HostDiscovery {
 public:
  // `dns_auto_update`: asked to bring the names of hosts up to date when one was chosen.
  HostDiscovery(Form& form, DebugLog& log, MessageConnections& connections, Originator& originator,
                const HostCache& cache, std::function<void()> dns_auto_update);

 private:
  void connect_to_typed_host();
  void connect_to_cached_host(std::size_t row);
  void ping_next_host();
  void end_connection(std::size_t row);

  Form& form_;
  DebugLog& log_;
  MessageConnections& connections_;
  Originator& originator_;
  const HostCache& cache_;
  std::function<void()> dns_auto_update_;
  std::size_t ping_cursor_ = 0;  // 0 reads as 1
};

}  // namespace velmora
