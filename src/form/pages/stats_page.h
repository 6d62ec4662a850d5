// The page "Stats": the traffic counters. A pair of counts is shown in one label, in before out.
#pragma once

#include "form/control.h"

namespace velmora {

struct StatsPage {
  explicit StatsPage(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::stats;

 public:
  Label net_stat{form_, "net_stat", page, "Messages", "Any message received.", "0"};
  Label bytein_stat{form_, "bytein_stat", page, "Bytes In", "Bytes received from all hosts.", "0"};
  Label byteout_stat{form_, "byteout_stat", page, "Bytes Out", "Bytes sent to all hosts.", "0"};
  Label drop_stat{form_,
                  "drop_stat",
                  page,
                  "Dropped",
                  "Messages Not Forwarded because TTL= 0 or Hops too high.",
                  "0"};
  Label route_stat{form_,
                   "route_stat",
                   page,
                   "Route errors",
                   "Pongs that answer no ping of mine or of a host I know.",
                   "0"};
  Label ping_stat{form_,
                  "ping_stat",
                  page,
                  "Ping In/Out",
                  "Ping In=Any ping received. Ping Out=Fowarding Any ping I didn't see before.",
                  "0"};
  Label myping_stat{form_,
                    "myping_stat",
                    page,
                    "My Ping In/Out",
                    "My Ping In=Got back my own ping. My Ping Out=Pings I sent.",
                    "0"};
  Label pong_stat{form_,
                  "pong_stat",
                  page,
                  "Pong In/Out",
                  "Pong In=Any pong received. Pong Out=Fowarding pongs back to who asked.",
                  "0"};
  Label mypong_stat{form_,
                    "mypong_stat",
                    page,
                    "My Pong In/Out",
                    "My Pong In=Replies to my pings. My Pong Out=My replies to any ping.",
                    "0"};
  Label search_stat{form_,
                    "search_stat",
                    page,
                    "Search In/Out",
                    "Search In=Any search received. Search Out=Not counted.",
                    "0"};
  Label reply_stat{form_,
                   "reply_stat",
                   page,
                   "Reply In/Out",
                   "Reply In=Any search reply received. Reply Out=Not counted.",
                   "0"};
  Label push_stat{form_,
                  "push_stat",
                  page,
                  "Push In/Out",
                  "Push In=Any push request received. Push Out=Not counted.",
                  "0"};
  Label unknown_stat{form_,
                     "unknown_stat",
                     page,
                     "Unknown",
                     "Unknown message type in header. These are Not Fowarded. Click to view.",
                     "0"};
};

}  // namespace velmora
