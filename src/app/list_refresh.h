// The `display` timer: every 500 ms the counters are written into their labels, the connected hosts
// and active uploads are recounted, and the lists whose figures move are shown again. It runs with
// and without a screen. The result list and the host cache are redrawn elsewhere.
#pragma once

#include <functional>
#include <memory>

#include "form/form.h"
#include "net/message_connections.h"
#include "net/traffic_counters.h"
#include "platform/event_loop.h"

namespace velmora {

class ListRefresh {
 public:
  ListRefresh(EventLoop& loop, Form& form, MessageConnections& connections,
              const TrafficCounters& counters);

  // Called with every refresh, for lists that other folders own.
  std::function<void()> also;

  void start();
  void stop();
  void refresh();

 private:
  Form& form_;
  MessageConnections& connections_;
  const TrafficCounters& counters_;
  std::unique_ptr<Timer> display_;
};

}  // namespace velmora
