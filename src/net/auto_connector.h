// The automatic connector: works through the host cache in batches, one every 5 seconds, until
// enough connections stand or the cache is at its end. The button connect_auto starts it and is
// disabled while it runs; max_out_host is both the size of a batch and the limit. It makes no
// connection itself and keeps no list of what it tried.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "form/form.h"
#include "net/host_cache.h"
#include "net/message_connections.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

class AutoConnector {
 public:
  AutoConnector(EventLoop& loop, Form& form, DebugLog& log, MessageConnections& connections,
                const HostCache& cache);

  // Back to rest: timer off, button enabled. The next start goes on where this one ended.
  void stop();

 private:
  struct Batch {
    std::size_t row;  // the next to be tried
    std::size_t end;  // one past the last
  };

  void connect_auto_Click();
  void find_alive_Timer();
  void Find_alive_hosts(std::int16_t batch, std::int16_t limit);
  void go_on(Batch& batch);
  void run(const std::function<void()>& step);
  [[nodiscard]] std::size_t connected_count() const;

  EventLoop& loop_;
  Form& form_;
  DebugLog& log_;
  MessageConnections& connections_;
  const HostCache& cache_;
  std::size_t cache_cursor_ = 0;  // row of the next batch; 0 reads as 1
  std::unique_ptr<Timer> find_alive_;
  std::shared_ptr<Batch> batch_;  // continuations of another one, or of none, do nothing
};

}  // namespace velmora
