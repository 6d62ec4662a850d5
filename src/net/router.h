// What happens to each descriptor that arrives: counted, looked up in the routing table, answered,
// forwarded under the TTL and hop rules, routed back, handed on, or dropped. Queries are never
// looked up in the routing table; what becomes of them, of hits and of pushes the relay tells. It
// writes through MessageConnections and owns nothing but the recent queries and the text of unknown
// descriptors.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "form/form.h"
#include "net/message_connections.h"
#include "net/originator.h"
#include "net/questions.h"
#include "net/recent_queries.h"
#include "net/relay.h"
#include "net/routing_table.h"
#include "net/traffic_counters.h"
#include "net/unknown_log.h"
#include "platform/behaviour.h"
#include "platform/field_number.h"
#include "protocol/framing.h"

namespace velmora {

enum class ForwardMode { to_all_others, to_this_one };

class Router : public DescriptorHandlers {
 public:
  struct Neighbours {
    PongIntake& pongs;
    QueryAnswerer& queries;
    QueryHitIntake& hits;
    PushAnswerer& pushes;
  };

  Router(Form& form, DebugLog& log, MessageConnections& connections, RoutingTable& routes,
         TrafficCounters& counters, Originator& originator, Relay& relay, Neighbours neighbours,
         const Behaviour& behaviour = kClassic);

  void count_received(std::size_t connection) override;
  void got_ping(const DescriptorHeader& header, std::string_view data,
                std::size_t connection) override;
  void got_pong(const DescriptorHeader& header, std::string_view data,
                std::size_t connection) override;
  void got_query(const DescriptorHeader& header, std::string_view data,
                 std::size_t connection) override;
  void got_query_reply(const DescriptorHeader& header, std::string_view data,
                       std::size_t connection) override;
  void got_push(const DescriptorHeader& header, std::string_view data,
                std::size_t connection) override;
  void got_unknown(const DescriptorHeader& header, std::size_t connection) override;

 private:
  bool refuse(bool bad_length, std::size_t connection);
  // Only bytes that are there leave: a short payload is forwarded short. `written_to` is raised by
  // the number of connections that it was written to.
  void foward_data(const DescriptorHeader& header, std::string_view data, std::size_t connection,
                   ForwardMode mode, float* written_to = nullptr);
  void pass_back(DescriptorHeader header, std::string_view data, std::size_t connection,
                 float& passed);

  Form& form_;
  DebugLog& log_;
  MessageConnections& connections_;
  RoutingTable& routes_;
  TrafficCounters& counters_;
  Originator& originator_;
  Relay& relay_;
  Neighbours neighbours_;
  const Behaviour& behaviour_;
  RecentQueries recent_queries_;
  UnknownLog unknown_log_;
  FieldNumber maximum_ttl_;
  std::string copy_;  // what leaves; its memory is used again and again
};

}  // namespace velmora
