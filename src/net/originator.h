// The procedures by which this servent speaks first: its pings, the pongs that answer others'
// pings, the user's queries, and the pushes that ask a servent to offer a file. Each builds a
// descriptor, enters what it originates into the routing table, writes it and counts. Each traps
// its own errors; only the push tells whether it was written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "form/form.h"
#include "net/message_connections.h"
#include "net/questions.h"
#include "net/routing_table.h"
#include "net/traffic_counters.h"
#include "platform/behaviour.h"
#include "protocol/identifiers.h"

namespace velmora {

class Originator : public QuerySender {
 public:
  Originator(const Identifiers& identifiers, Form& form, DebugLog& log,
             MessageConnections& connections, RoutingTable& routes, TrafficCounters& counters,
             SearchMemory& searches, const Behaviour& behaviour = kClassic);

  void send_ping(std::size_t connection);
  // A ping that only the neighbour answers, and always: its identifier is never used again.
  void send_keep_alive(std::size_t connection);
  void send_pong(std::size_t connection, const DescriptorHeader& ping);
  void send_query(const std::string& search_text) override;
  // Asks the servent, by its identifier, to connect to this one's upload port. Returns whether the
  // push was written.
  bool send_push(std::size_t connection, std::string_view servent, std::int32_t file_number);

 private:
  [[nodiscard]] std::string own_address() const;
  void write_ping(std::size_t connection, const DescriptorHeader& header);
  [[nodiscard]] double total_to_tell() const;
  [[nodiscard]] DescriptorHeader new_header(std::uint8_t function, std::string_view guid) const;

  const std::string& pong_payload();

  // What a pong tells.
  struct PongSource {
    std::string address;
    std::int16_t port = 0;
    std::string files;
    std::string kilobytes;
    bool large_library = false;
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
  const Behaviour& behaviour_;
};

}  // namespace velmora
