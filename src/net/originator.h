// The three procedures by which this servent speaks first: its pings, the pongs that answer others'
// pings, and the user's queries. Each builds a descriptor, enters what it originates into the
// routing table, writes it and counts. Each traps its own errors and returns nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "form/form.h"
#include "net/message_connections.h"
#include "net/questions.h"
#include "net/routing_table.h"
#include "net/traffic_counters.h"
#include "protocol/identifiers.h"

namespace velmora {

class Originator : public QuerySender {
 public:
  Originator(const Identifiers& identifiers, Form& form, DebugLog& log,
             MessageConnections& connections, RoutingTable& routes, TrafficCounters& counters,
             SearchMemory& searches);

  void send_ping(std::size_t connection);
  void send_pong(std::size_t connection, const DescriptorHeader& ping);
  void send_query(const std::string& search_text) override;

 private:
  [[nodiscard]] DescriptorHeader new_header(std::uint8_t function, std::string_view guid) const;

  const std::string& pong_payload();

  // What a pong tells.
  struct PongSource {
    std::string address;
    std::int16_t port = 0;
    std::string files;
    std::string kilobytes;
    bool operator==(const PongSource&) const = default;
  };

  const Identifiers& identifiers_;
  Form& form_;
  DebugLog& log_;
  MessageConnections& connections_;
  RoutingTable& routes_;
  TrafficCounters& counters_;
  SearchMemory& searches_;
  PongSource pong_source_;
  std::string pong_payload_;
};

}  // namespace velmora
