// The program-wide traffic counters, one pair per kind of descriptor. They live for the process.
// Kept: single precision, so that a counter stands still at 16,777,216; only the message and byte
// counts are wider. Some "out" halves are never raised, and two "sent" counters are never shown.
#pragma once

namespace velmora {

struct TrafficCounters {
  double messages_received = 0;
  double bytes_received = 0;
  double bytes_sent = 0;
  float dropped = 0;
  float route_errors = 0;
  float pings_in = 0;
  float pings_out = 0;
  float my_pings_in = 0;
  float my_pings_out = 0;
  float pongs_in = 0;
  float pongs_out = 0;
  float my_pongs_in = 0;
  float my_pongs_out = 0;
  float queries_in = 0;
  float queries_out = 0;
  float queries_sent = 0;
  float query_hits_in = 0;
  float query_hits_out = 0;
  float query_hits_sent = 0;
  float pushes_in = 0;
  float pushes_out = 0;
  float unknown = 0;

  bool operator==(const TrafficCounters&) const = default;
};

}  // namespace velmora
