#include "net/message_connections.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr int kConnectTimeout_ms = 4000;
constexpr int kTick_ms = 5000;
constexpr int kBacklog = 200;
constexpr std::int16_t kSilentTicks = 5;

// Kept: a handshake counts only when one read delivers it whole and alone.
constexpr std::string_view kHello = "GNUTELLA CONNECT/0.4\n\n";
constexpr std::string_view kWelcome = "GNUTELLA OK\n\n";

}  // namespace

MessageConnections::MessageConnections(EventLoop& loop, Network& network, Form& form, DebugLog& log,
                                       TrafficCounters& counters, RoutingTable& routes)
    : loop_(loop),
      network_(network),
      form_(form),
      log_(log),
      counters_(counters),
      routes_(routes) {}

MessageConnections::~MessageConnections() { *alive_ = false; }

void MessageConnections::listen(std::uint16_t port) {
  listener_.reset();
  listener_ = network_.listen(port, kBacklog, *this);
  note_opening_change();
}

std::string MessageConnections::local_address() const { return network_.local_address(); }

std::int16_t MessageConnections::local_port() const {
  return listener_ ? to_port(listener_->local_port()) : std::int16_t{0};
}

std::size_t MessageConnections::free_index() const {
  std::size_t index = 1;
  while (slots_.has(index) && slots_.at(index).state >= kOpening) ++index;
  return index;
}

MessageSocket& MessageConnections::load(std::size_t index) {
  elements_.grow_to(index);
  MessageSocketOwner& owner = *this;
  elements_.at(index) = std::make_unique<MessageSocket>(owner, index, ++generations_);
  return *elements_.at(index);
}

void MessageConnections::unload(std::size_t index) {
  if (elements_.has(index)) elements_.at(index).reset();
}

// An incoming connection needs this timer as much as an outgoing one: it ends peers that never
// complete the handshake.
void MessageConnections::load_timeout(std::size_t index) {
  MessageSocket& element = *elements_.at(index);
  element.timeout_msg_t = loop_.make_timer(kTick_ms, [this, index] { timeout_msg_t_Timer(index); });
  element.timeout_msg_t->set_enabled(true);
}

std::size_t MessageConnections::Connect_in_msg_socket(std::unique_ptr<Socket> pending) {
  const std::size_t index = free_index();
  MessageSocket& element = load(index);
  SlotChange change;
  change.status = "accepting";
  change.direction = "In";
  change.state = kOpening;
  change.address = pending->peer_address();
  change.port = to_port(pending->peer_port());
  change.local_port = to_port(pending->local_port());
  change.reset_counts = true;
  change.reset_ticks = true;
  set_hosts_stat(index, change);
  slots_.at(index).host_name.clear();
  element.socket = std::move(pending);
  element.socket->set_events(&element);
  return index;
}

void MessageConnections::on_accept(std::unique_ptr<Socket> pending) {
  trap(log_, "msg_Accept: ", [&] {
    const std::size_t index = Connect_in_msg_socket(std::move(pending));
    // Kept: tested after the accept, against the count of the last list refresh.
    if (typed_number(form_.max_in_host.text()) <= count_in_) {
      unload(index);
      set_hosts_stat(index, {.status = "Sock freed", .state = kFreed});
      return;
    }
    load_timeout(index);
  });
}

std::string MessageConnections::connect_out(const std::string& address, std::int16_t port,
                                            const std::string& host_name) {
  for (const ConnectionSlot& slot : slots_) {
    if (slot.state >= kOpening && slot.address == address) {
      return "Already connected to this host.";
    }
  }
  return trapped("connect_out: ", [&] {
    const std::size_t index = free_index();
    MessageSocket& element = load(index);
    const bool by_name = form_.connect_dns.checked() && host_name.size() > 2;
    try {
      element.socket = network_.connect(by_name ? host_name : address, unsigned_port(port),
                                        kConnectTimeout_ms, element);
    } catch (...) {
      unload(index);
      throw;
    }
    SlotChange change{.address = address,
                      .port = port,
                      .direction = "Out",
                      .status = "Requesting to Connect",
                      .state = kOpening,
                      .reset_counts = true,
                      .reset_ticks = true};
    set_hosts_stat(index, change);
    ConnectionSlot& slot = slots_.at(index);
    slot.port = port;
    slot.host_name = host_name;
    slot.local_port = 0;
    load_timeout(index);
  });
}

void MessageConnections::msgwrite(std::size_t index, std::string_view data) {
  const auto& element = elements_.at(index);
  if (!element || !element->socket) throw PlatformError(Errc::not_connected);
  // Kept: the length travels as a signed 16-bit number.
  to_int16(static_cast<double>(data.size()));
  element->socket->write(data);
  counters_.bytes_sent += static_cast<double>(data.size());
}

void MessageConnections::set_hosts_stat(std::size_t index, const SlotChange& change) {
  slots_.grow_to(index);
  ConnectionSlot& slot = slots_.at(index);
  slot.socket = static_cast<std::int32_t>(index);
  if (!change.address.empty()) slot.address = change.address;
  if (change.port != 0) slot.port = change.port;
  if (!change.host_name.empty()) slot.host_name = change.host_name;
  if (!change.direction.empty()) slot.direction = change.direction;
  if (change.local_port != 0) slot.local_port = change.local_port;
  if (!change.status.empty()) slot.status = change.status;
  if (change.reset_counts) slot.sent = slot.received = slot.dropped = 0;
  if (change.reset_ticks) slot.silence_ticks = 0;
  if (change.add_tick) slot.silence_ticks = to_int16(slot.silence_ticks + 1.0);
  if (change.state != 0 && change.state != slot.state) {
    if (slot.state == kOpening) --opening_;
    if (change.state == kOpening) ++opening_;
    slot.state = change.state;
    note_opening_change();
  }
  form_.lHosts.redraw();
}

void MessageConnections::note_opening_change() {
  if (listener_) listener_->set_accepting(opening_ < kMaxOpening);
}

bool MessageConnections::connected(std::size_t index) const {
  return slots_.has(index) && slots_.at(index).state == kConnected;
}

std::size_t MessageConnections::unsent(std::size_t index) const {
  if (!elements_.has(index)) return 0;
  const auto& element = elements_.at(index);
  return element && element->socket ? element->socket->unsent() : 0;
}

void MessageConnections::recount() {
  count_in_ = count_out_ = 0;
  for (const ConnectionSlot& slot : slots_) {
    if (slot.state != kConnected) continue;
    std::int16_t& count = slot.direction == "In" ? count_in_ : count_out_;
    ++count;
  }
}

void MessageConnections::close_all() {
  *alive_ = false;
  alive_ = std::make_shared<bool>(true);
  for (std::size_t i = 1; i <= slots_.upper_bound(); ++i) {
    if (slots_.at(i).state >= kOpening) routes_.clear_routes(i);
    unload(i);
  }
  listener_.reset();
}

// ---- events of one element ----

void MessageConnections::msg_Connect(std::size_t index) {
  trap(log_, "msg_Connect: ", [&] {
    if (slots_.at(index).direction == "In") return;
    elements_.at(index)->socket->write_alone(kHello);
    counters_.bytes_sent += static_cast<double>(kHello.size());
  });
}

void MessageConnections::msg_Timeout(std::size_t index) {
  elements_.at(index)->timeout_msg_t.reset();
  set_hosts_stat(index, {.status = "No response", .state = kClosing});
  free_msg_socket(index);
  log_.debug_log("Time-out on sock: " + std::to_string(index));
}

void MessageConnections::msg_Disconnect(std::size_t index) {
  set_hosts_stat(index, {.status = "Disconnected", .state = kClosing});
  free_msg_socket(index);
}

void MessageConnections::connection_stands(std::size_t index, const char* way) {
  const Socket& socket = *elements_.at(index)->socket;
  const SlotChange change{.address = socket.peer_address(),
                          .port = to_port(socket.peer_port()),
                          .local_port = to_port(socket.local_port()),
                          .status = "Connected",
                          .state = kConnected,
                          .reset_counts = true,
                          .reset_ticks = true};
  set_hosts_stat(index, change);
  log_.debug_log("Connected " + std::string(way) + " to: " + change.address +
                 " on port: " + std::to_string(unsigned_port(change.port)));
}

void MessageConnections::msg_Read(std::size_t index, std::string_view data) {
  trap(log_, "msg_Read: ", [&] {
    MessageSocket& element = *elements_.at(index);
    counters_.bytes_received += static_cast<double>(data.size());
    if (data == kHello) {
      element.socket->write_alone(kWelcome);
      counters_.bytes_sent += static_cast<double>(kWelcome.size());
      connection_stands(index, "IN");
    } else if (data == kWelcome) {
      connection_stands(index, "OUT");
    } else if (data.starts_with("GET ")) {
      log_.debug_log("Request a file of mine on msg port: " + std::string(data));
    } else {
      if (element.timeout_msg_t) {
        element.timeout_msg_t->set_enabled(false);
        element.timeout_msg_t->set_enabled(true);
      }
      ConnectionSlot& slot = slots_.at(index);
      slot.silence_ticks = 0;
      slot.status = "Connected";
      hand_over(index, data, true);
    }
  });
}

// The framing handles some descriptors a turn; while a rest waits, nothing more is read from this
// connection, so that the rest stays the only one.
void MessageConnections::hand_over(std::size_t index, std::string_view data, bool first) {
  const std::uint64_t generation = elements_.at(index)->generation;
  const std::size_t done = framing_->Format_in_data(data, index, first);
  const auto& element = elements_.at(index);
  if (!element || element->generation != generation || !element->socket) return;
  if (done >= data.size()) {
    std::string().swap(element->rest);  // a large chunk's memory does not stay with the slot
    element->rest_done = 0;
    if (!first) element->socket->set_reading(true);
    return;
  }
  if (first) {
    element->rest.assign(data.substr(done));
    element->socket->set_reading(false);
  } else {
    element->rest_done += done;
  }
  loop_.post([this, index, generation, alive = alive_] {
    if (*alive) continue_chunk(index, generation);
  });
}

void MessageConnections::continue_chunk(std::size_t index, std::uint64_t generation) {
  trap(log_, "msg_Read: ", [&] {
    const auto& element = elements_.at(index);
    if (!element || element->generation != generation || element->rest.empty()) return;
    hand_over(index, std::string_view(element->rest).substr(element->rest_done), false);
  });
}

void MessageConnections::timeout_msg_t_Timer(std::size_t index) {
  ConnectionSlot& slot = slots_.at(index);
  if (slot.state == kOpening) {
    set_hosts_stat(index, {.status = "Not accepted", .state = kClosing});
  } else if (slot.state == kConnected) {
    set_hosts_stat(index, {.add_tick = true});
    const std::int16_t ticks = slot.silence_ticks;
    set_hosts_stat(index, {.status = "Waiting.." + std::to_string(ticks)});
    if (ticks < kSilentTicks) return;
    set_hosts_stat(index, {.status = "No Data, Disconnecting", .state = kClosing});
  } else {
    return;
  }
  free_msg_socket(index);
  elements_.at(index)->timeout_msg_t.reset();
}

void MessageConnections::free_msg_socket(std::size_t index) {
  routes_.clear_routes(index);
  const auto& element = elements_.at(index);
  if (!element) return;
  element->rest.clear();
  element->rest_done = 0;
  if (element->free_msgsock_t) return;
  element->free_msgsock_t =
      loop_.make_timer(kTick_ms, [this, index] { free_msgsock_t_Timer(index); });
  element->free_msgsock_t->set_enabled(true);
}

void MessageConnections::free_msgsock_t_Timer(std::size_t index) {
  set_hosts_stat(index, {.status = "Sock freed", .state = kFreed});
  routes_.clear_routes(index);
  unload(index);
}

void MessageConnections::disconnect(std::size_t index) {
  if (!slots_.has(index) || slots_.at(index).state < kOpening) return;
  const auto& element = elements_.at(index);
  if (element) element->socket.reset();
  set_hosts_stat(index, {.status = "Disconnecting", .state = kClosing});
  free_msg_socket(index);
}

}  // namespace velmora
