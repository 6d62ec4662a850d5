// What relaying answers takes beside the classic routing: which queries are repeats, which way a
// hit goes back, and which way a push finds its servent. While the switch "relay" is off every
// query is taken and every hit is this servent's own; servents are remembered for pushes too, while
// "push" is on. It writes nothing; the router does. It counts what has no way as route errors.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "net/message_connections.h"
#include "net/query_routes.h"
#include "net/questions.h"
#include "net/servent_routes.h"
#include "net/traffic_counters.h"
#include "platform/behaviour.h"
#include "platform/event_loop.h"
#include "protocol/payloads.h"

namespace velmora {

class Relay : public SearchMemory {
 public:
  // Own searches go on to `searches`, which gives their numbers. Nothing is owned.
  Relay(EventLoop& loop, MessageConnections& connections, TrafficCounters& counters,
        SearchMemory& searches, const Behaviour& behaviour);

  std::int16_t remember_search(const std::string& text, const std::string& guid) override;
  void visit_searches(const Visit& visit) const override { searches_.visit_searches(visit); }

  // Whether the query is to be answered and forwarded. Repeats are not, own queries that come back
  // are not, nor are queries of which bytes are missing.
  bool takes_query(const DescriptorHeader& header, std::string_view data, std::string_view text,
                   std::size_t connection);

  // Where the hit goes; none: nowhere, it is counted.
  std::optional<Way> way_of_hit(const DescriptorHeader& header, std::string_view data,
                                const QueryHit& hit, std::size_t connection);

  // The connection on which a push goes on; 0: none, it is counted.
  std::size_t way_of_push(const Push& push, std::size_t connection);

  // The connection on which a servent was last heard of; 0: none that stands.
  [[nodiscard]] std::size_t way_to(std::string_view servent) const;

  // Frees what the switches that are off held. Own searches from before "relay" are known with it.
  void follow_behaviour();

 private:
  [[nodiscard]] bool stands(const Way& way) const;
  [[nodiscard]] Way from(std::size_t connection) const;
  void note_servent(const QueryHit& hit, std::size_t connection);
  void enter_own(std::int16_t number, const std::string& text, const std::string& guid);
  bool whole(const DescriptorHeader& header, std::string_view data, std::size_t connection);

  EventLoop& loop_;
  MessageConnections& connections_;
  TrafficCounters& counters_;
  SearchMemory& searches_;
  const Behaviour& behaviour_;
  QueryRoutes queries_;
  ServentRoutes servents_;
  bool relays_ = false;  // as follow_behaviour() last saw the switch
};

}  // namespace velmora
