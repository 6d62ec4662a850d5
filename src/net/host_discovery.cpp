#include "net/host_discovery.h"

#include <string>

#include "platform/number.h"
#include "protocol/conversions.h"

namespace velmora {

HostDiscovery::HostDiscovery(Form& form, MessageConnections& connections, Originator& originator)
    : form_(form), connections_(connections), originator_(originator) {
  form_.new_host.on_enter = [this] { connect_to_typed_host(); };
  form_.more_cache.on_click = [this] { ping_next_host(); };
  form_.lHosts.on_activate = [this](std::size_t row) { end_connection(row); };
}

void HostDiscovery::connect_to_typed_host() {
  const CheckedHost host = Check_IP(form_.new_host.text());
  form_.StatusBar.set_panel(1, host.message.empty()
                                   ? connections_.connect_out(host.address, host.port, "?")
                                   : host.message);
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
