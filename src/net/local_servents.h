// Servents on the same network find each other while the switch for that is on: this one announces
// its message port, puts those that it hears of into the host cache, and connects to them until
// max_out_host connections go out. It owns no connection; the platform does the finding.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "form/form.h"
#include "net/host_cache.h"
#include "net/message_connections.h"
#include "platform/behaviour.h"
#include "platform/event_loop.h"
#include "platform/local_services.h"

namespace velmora {

class LocalServents : private LocalServicesEvents {
 public:
  // So many found servents wait for a connection at most; those found first go first.
  static constexpr std::size_t kMostWaiting = 64;

  // `services` may be null: the machine has none.
  LocalServents(EventLoop& loop, LocalServices* services, const Form& form, DebugLog& log,
                MessageConnections& connections, HostCache& cache, const Behaviour& behaviour);

  // Begins or ends the announcement as the switch and the listening port say.
  void update();
  void stop();

 private:
  void on_found(const LocalService& service) override;
  void look_again();
  [[nodiscard]] bool speaks_first(const LocalService& other) const;
  [[nodiscard]] bool room() const;
  void connect_to(const LocalService& service);

  LocalServices* services_;
  const Form& form_;
  DebugLog& log_;
  MessageConnections& connections_;
  HostCache& cache_;
  const Behaviour& behaviour_;
  std::uint16_t announced_ = 0;  // the port; 0: nothing is announced
  std::vector<LocalService> waiting_;
  std::unique_ptr<Timer> look_again_;
};

}  // namespace velmora
