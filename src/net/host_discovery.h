// How a person finds and leaves hosts by hand: a typed address (new_host), the "More" button
// (more_cache) that pings one connected host at a time, and the double click in lHosts that ends a
// connection. It wires these controls; the connections do the work.
#pragma once

#include <cstddef>

#include "form/form.h"
#include "net/message_connections.h"
#include "net/originator.h"

namespace velmora {

class HostDiscovery {
 public:
  HostDiscovery(Form& form, MessageConnections& connections, Originator& originator);

 private:
  void connect_to_typed_host();
  void ping_next_host();
  void end_connection(std::size_t row);

  Form& form_;
  MessageConnections& connections_;
  Originator& originator_;
  std::size_t ping_cursor_ = 0;  // 0 reads as 1
};

}  // namespace velmora
