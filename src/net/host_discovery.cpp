#include "net/host_discovery.h"

#include <string>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/conversions.h"

namespace velmora {

HostDiscovery::HostDiscovery(Form& form, DebugLog& log, MessageConnections& connections,
                             Originator& originator, const HostCache& cache,
                             std::function<void()> dns_auto_update)
    : form_(form),
      log_(log),
      connections_(connections),
      originator_(originator),
      cache_(cache),
      dns_auto_update_(std::move(dns_auto_update)) {
  form_.new_host.on_enter = [this] { connect_to_typed_host(); };
  form_.more_cache.on_click = [this] { ping_next_host(); };
  form_.lcache.on_activate = [this](std::size_t row) { connect_to_cached_host(row); };
  form_.lHosts.on_activate = [this](std::size_t row) { end_connection(row); };
}

void HostDiscovery::connect_to_typed_host() {
  const CheckedHost host = Check_IP(form_.new_host.text());
  form_.StatusBar.set_panel(1, host.message.empty()
                                   ? connections_.connect_out(host.address, host.port, "?")
                                   : host.message);
}

// The list may still show a row that the cache has dropped.
void HostDiscovery::connect_to_cached_host(std::size_t row) {
  trap(log_, "lcache_DblClick: ", [&] {
    const CacheHost host = cache_.row(row);
    form_.StatusBar.set_panel(1, connections_.connect_out(host.address, host.port, host.host_name));
    dns_auto_update_();
  });
}

// Kept: the search does not wrap round, so a connection below the cursor is found only by a later
// press.
void HostDiscovery::ping_next_host() {
  const auto& slots = connections_.connection_slots();
  if (ping_cursor_ == 0) ping_cursor_ = 1;
  if (!slots.has(ping_cursor_) || slots.at(ping_cursor_).state < kOpening) ++ping_cursor_;
  if (ping_cursor_ > slots.upper_bound()) ping_cursor_ = 1;
  for (std::size_t i = ping_cursor_; i <= slots.upper_bound(); ++i) {
    if (!connections_.connected(i)) continue;
    originator_.send_ping(i);
    form_.StatusBar.set_panel(1, "Sent Ping to Socket: " + std::to_string(i));
    ping_cursor_ = i + 1 > slots.upper_bound() ? 1 : i + 1;
    return;
  }
  form_.StatusBar.set_panel(1, "No Connections to send Ping!");
}

void HostDiscovery::end_connection(std::size_t row) {
  const double index = val(form_.lHosts.cell(row, 6));
  connections_.disconnect(static_cast<std::size_t>(to_int16(index)));
}

}  // namespace velmora
