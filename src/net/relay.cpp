#include "net/relay.h"

namespace velmora {

Relay::Relay(EventLoop& loop, MessageConnections& connections, TrafficCounters& counters,
             SearchMemory& searches, const Behaviour& behaviour)
    : loop_(loop),
      connections_(connections),
      counters_(counters),
      searches_(searches),
      behaviour_(behaviour) {}

std::int16_t Relay::remember_search(const std::string& text, const std::string& guid) {
  const std::int16_t number = searches_.remember_search(text, guid);
  if (behaviour_.relay) enter_own(number, text, guid);
  return number;
}

void Relay::enter_own(std::int16_t number, const std::string& text, const std::string& guid) {
  queries_.enter(guid, text, {.search = number}, loop_.now_ms());
}

// Kept: a repeated query is answered and forwarded again; only TTL and hops stop it.
bool Relay::takes_query(const DescriptorHeader& header, std::string_view data,
                        std::string_view text, std::size_t connection) {
  if (!behaviour_.relay) return true;
  if (!whole(header, data, connection)) return false;
  const std::int64_t now_ms = loop_.now_ms();
  if (queries_.repeated(header.guid, text, now_ms)) return false;
  queries_.enter(header.guid, text, from(connection), now_ms);
  return true;
}

// Kept: every hit is for us, whatever query it answers, and none is passed on.
std::optional<Way> Relay::way_of_hit(const DescriptorHeader& header, std::string_view data,
                                     const QueryHit& hit, std::size_t connection) {
  if (behaviour_.relay || behaviour_.push) note_servent(hit, connection);
  if (!behaviour_.relay) return Way{};
  if (!whole(header, data, connection)) return std::nullopt;
  const std::string_view name =
      hit.results.empty() ? std::string_view() : hit.results.front().file_name;
  const Way* way = queries_.way_back(header.guid, name, [&](const Way& one) {
    return one.connection == 0 || (one.connection != connection && stands(one));
  });
  if (way != nullptr) return *way;
  counters_.route_errors += 1;
  return std::nullopt;
}

// Kept: a push is counted and nothing else is done with it.
std::size_t Relay::way_of_push(const Push& push, std::size_t connection) {
  if (!behaviour_.relay) return 0;
  const std::size_t way = way_to(push.servent);
  if (way != 0 && way != connection) return way;
  counters_.route_errors += 1;
  return 0;
}

std::size_t Relay::way_to(std::string_view servent) const {
  const Way* way = servents_.way_to(servent);
  return way != nullptr && stands(*way) ? way->connection : 0;
}

void Relay::follow_behaviour() {
  if (behaviour_.relay && !relays_) {
    visit_searches([this](std::int16_t number, const std::string& text, const std::string& guid) {
      enter_own(number, text, guid);
    });
  }
  relays_ = behaviour_.relay;
  if (!behaviour_.relay) queries_.clear();
  if (!behaviour_.relay && !behaviour_.push) servents_.clear();
}

bool Relay::stands(const Way& way) const {
  return connections_.connected(way.connection) &&
         connections_.generation(way.connection) == way.generation;
}

Way Relay::from(std::size_t connection) const {
  return {.connection = connection, .generation = connections_.generation(connection)};
}

// A hit that is cut short carries no identifier.
void Relay::note_servent(const QueryHit& hit, std::size_t connection) {
  if (hit.servent_guid != std::string(kGuidSize, ' ')) {
    servents_.enter(hit.servent_guid, from(connection));
  }
}

// One that was cut between two reads would make the next servent take what follows for its rest.
bool Relay::whole(const DescriptorHeader& header, std::string_view data, std::size_t connection) {
  if (data.size() >= kHeaderSize + static_cast<std::size_t>(header.payload_length)) return true;
  connections_.connection_slots().at(connection).dropped += 1;
  return false;
}

}  // namespace velmora
