#include "net/router.h"

#include <algorithm>
#include <string>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/payloads.h"

namespace velmora {
namespace {

// Kept: a TTL above this is cut to the maximum; one between the maximum and this passes.
constexpr int kAbsurdTtl = 50;

std::int16_t as_route_index(std::size_t connection) {
  return to_int16(static_cast<double>(connection));
}

// The payload bytes that a descriptor's header claims, as far as they are in the chunk.
std::string_view payload_of(const DescriptorHeader& header, std::string_view data) {
  const auto claimed = static_cast<std::size_t>(std::max(header.payload_length, 0.0F));
  return data.substr(std::min(kHeaderSize, data.size())).substr(0, claimed);
}

}  // namespace

Router::Router(Form& form, DebugLog& log, MessageConnections& connections, RoutingTable& routes,
               TrafficCounters& counters, Originator& originator, Relay& relay,
               Neighbours neighbours, const Behaviour& behaviour)
    : form_(form),
      log_(log),
      connections_(connections),
      routes_(routes),
      counters_(counters),
      originator_(originator),
      relay_(relay),
      neighbours_(neighbours),
      behaviour_(behaviour),
      recent_queries_(form.lview, form.traffic_view),
      unknown_log_(form.frmUnknown) {}

void Router::count_received(std::size_t connection) {
  connections_.connection_slots().at(connection).received += 1;
  counters_.messages_received += 1;
}

// A payload of the wrong length is counted against its connection and goes no further.
bool Router::refuse(bool bad_length, std::size_t connection) {
  if (bad_length) connections_.connection_slots().at(connection).dropped += 1;
  return bad_length;
}

void Router::got_ping(const DescriptorHeader& header, std::string_view data,
                      std::size_t connection) {
  trap(log_, "got_ping: ", [&] {
    if (refuse(header.payload_length != 0, connection)) return;
    counters_.pings_in += 1;
    Route route{.connection = as_route_index(connection), .function = kPing};
    if (!routes_.seen_guid(header.guid, route)) {
      foward_data(header, data, connection, ForwardMode::to_all_others, &counters_.pings_out);
      originator_.send_pong(connection, header);
    } else if (route.function == kPing) {
      // Kept: every repeated ping counts as our own come back, whoever sent it first.
      counters_.my_pings_in += 1;
    }
  });
}

void Router::got_pong(const DescriptorHeader& header, std::string_view data,
                      std::size_t connection) {
  trap(log_, "got_pong: ", [&] {
    if (refuse(header.payload_length != kPongLength, connection)) return;
    counters_.pongs_in += 1;
    Pong pong;
    if (str_to_pong(payload_of(header, data), pong, log_, behaviour_)) {
      neighbours_.pongs.set_cache_stat(header, pong, connection);
    }
    Route route{.connection = as_route_index(connection), .function = kPong};
    const bool seen = routes_.seen_guid(header.guid, route);
    if (seen && route.function == kPing && route.origin_mark == 0) {
      foward_data(header, data, static_cast<std::size_t>(route.connection),
                  ForwardMode::to_this_one);
      counters_.pongs_out += 1;
    } else if (seen && route.function == kPing && route.origin_mark == kOurOwn) {
      counters_.my_pongs_in += 1;
    } else {
      counters_.route_errors += 1;
    }
  });
}

void Router::got_query(const DescriptorHeader& header, std::string_view data,
                       std::size_t connection) {
  trap(log_, "got_query: ", [&] {
    if (refuse(header.payload_length > kMaxQueryLength, connection)) return;
    const std::string_view text = query_text(header, data);
    if (relay_.takes_query(header, data, text, connection)) {
      recent_queries_.add(text, header.guid);
      neighbours_.queries.send_query_reply(text, header, connection);
      foward_data(header, data, connection, ForwardMode::to_all_others);
    }
    counters_.queries_in += 1;
  });
}

void Router::got_query_reply(const DescriptorHeader& header, std::string_view data,
                             std::size_t connection) {
  trap(log_, "got_query_reply: ", [&] {
    if (refuse(header.payload_length > kMaxQueryHitLength, connection)) return;
    counters_.query_hits_in += 1;
    const QueryHit hit = str_to_query_reply(header, data.substr(std::min(kHeaderSize, data.size())),
                                            log_, behaviour_);
    const auto way = relay_.way_of_hit(header, data, hit, connection);
    if (!way) return;
    if (way->connection == 0) return neighbours_.hits.set_query_reply_view(hit, way->search);
    pass_back(header, data, way->connection, counters_.query_hits_out);
  });
}

void Router::got_push(const DescriptorHeader& header, std::string_view data,
                      std::size_t connection) {
  trap(log_, "got_push: ", [&] {
    if (refuse(header.payload_length != kPushLength, connection)) return;
    counters_.pushes_in += 1;
    const auto push = str_to_push(payload_of(header, data));
    if (!push || neighbours_.pushes.answer_push(*push)) return;
    const std::size_t way = relay_.way_of_push(*push, connection);
    if (way != 0) pass_back(header, data, way, counters_.pushes_out);
  });
}

void Router::got_unknown(const DescriptorHeader& header, std::size_t connection) {
  unknown_log_.add(header);
  connections_.connection_slots().at(connection).dropped += 1;
  counters_.unknown += 1;
}

// What goes back on the way of another descriptor cannot spread, and must reach as far as that one
// came, whatever TTL its sender chose: so its TTL ends at 1, and only too many hops stop it.
void Router::pass_back(DescriptorHeader header, std::string_view data, std::size_t connection,
                       float& passed) {
  header.ttl = std::max<std::uint8_t>(header.ttl, 2);
  foward_data(header, data, connection, ForwardMode::to_this_one, &passed);
}

void Router::foward_data(const DescriptorHeader& header, std::string_view data,
                         std::size_t connection, ForwardMode mode, float* written_to) {
  trap(log_, "foward_data: ", [&] {
    const double maximum_ttl = maximum_ttl_.of(form_.ttlMax_config.text());
    std::uint8_t hops = header.hops;
    std::uint8_t ttl = header.ttl;
    if (hops < 255) ++hops;
    if (ttl > 0) --ttl;
    if (ttl > kAbsurdTtl) ttl = to_byte(maximum_ttl);
    if (hops > maximum_ttl || ttl == 0) {
      counters_.dropped += 1;
      return;
    }
    const std::string_view descriptor =
        data.substr(0, kHeaderSize + static_cast<std::size_t>(header.payload_length));
    if (mode == ForwardMode::to_all_others) {
      connections_.to_all_others().add(connection, descriptor, ttl, hops, written_to);
    } else if (connections_.connected(connection)) {
      copy_ = descriptor;
      copy_[kTtlOffset] = static_cast<char>(ttl);
      copy_[kHopsOffset] = static_cast<char>(hops);
      connections_.msgwrite(connection, copy_);
      connections_.connection_slots().at(connection).sent += 1;
      if (written_to != nullptr) *written_to += 1;
    }
  });
}

}  // namespace velmora
