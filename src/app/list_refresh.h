// The `display` timer: every 500 ms the counters are written into their labels, the connected hosts
// and active uploads are recounted, the lists whose figures move are shown again, and every second
// the traffic history takes a sample. It runs with and without a screen. The result list and the
// host cache are redrawn elsewhere.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "app/traffic_history.h"
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

  [[nodiscard]] const TrafficHistory& traffic_history() const { return history_; }

 private:
  void show_counters();

  Form& form_;
  MessageConnections& connections_;
  const TrafficCounters& counters_;
  TrafficHistory history_;
  std::optional<TrafficCounters> shown_;  // in the labels
  bool sample_is_due_ = false;            // at every second refresh
  std::unique_ptr<Timer> display_;
};

}  // namespace velmora
