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
constexpr int kOpeningCheck_ms = 1000;
constexpr std::int64_t kFramingMs = 3;  // of a turn, for all connections together
constexpr int kDescriptorsPerLook = 8;  // at the clock
constexpr std::int16_t kSilentTicks = 5;
constexpr std::size_t kMostAtOnce = 32767;  // bytes of one string

// Kept: a handshake counts only when one read delivers it whole and alone.
constexpr std::string_view kHello = "GNUTELLA CONNECT/0.4\n\n";
constexpr std::string_view kWelcome = "GNUTELLA OK\n\n";

void restart(Timer& timer) {
  timer.set_enabled(false);
  timer.set_enabled(true);
}

// What a chunk's turn has gathered leaves within it, however the turn ends.
struct WrittenAtEnd {
  BroadcastRun& run;
  ~WrittenAtEnd() { run.write(); }
};

}  // namespace

MessageConnections::MessageConnections(EventLoop& loop, Network& network, Form& form, DebugLog& log,
                                       TrafficCounters& counters, RoutingTable& routes,
                                       const Behaviour& behaviour)
    : loop_(loop),
      network_(network),
      form_(form),
      log_(log),
      counters_(counters),
      routes_(routes),
      behaviour_(behaviour),
      run_(*this, log),
      opening_check_(loop.make_timer(kOpeningCheck_ms, [this] { end_old_openings(); })) {}

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
  slots_.grow_to(index);
  // Made here, so that a connection that stands needs no more memory.
  if (connected_.capacity() < index) connected_.reserve(2 * index);
  auto element = std::make_unique<MessageSocket>(owner, index, ++generations_, loop_.now_ms());
  // Made here, so that closing needs no memory.
  element->timer = loop_.make_timer(kTick_ms, [this, index] {
    if (elements_.at(index)->freeing) return free_msgsock_t_Timer(index);
    timeout_msg_t_Timer(index);
  });
  return *(elements_.at(index) = std::move(element));
}

// Runs the set-up of an element; one that fails leaves nothing behind.
template <class SetUp>
void MessageConnections::set_up(std::size_t index, SetUp&& body) {
  try {
    std::forward<SetUp>(body)();
  } catch (...) {
    unload(index);
    if (slots_.has(index)) set_hosts_stat(index, {.status = "Sock freed", .state = kFreed});
    throw;
  }
}

void MessageConnections::unload(std::size_t index) {
  if (!loaded(index)) return;
  let_go_of_rest(*elements_.at(index));
  elements_.at(index).reset();
}

// An incoming connection needs this timer as much as an outgoing one: it ends peers that never
// complete the handshake.
void MessageConnections::load_timeout(std::size_t index) {
  elements_.at(index)->timer->set_enabled(true);
}

void MessageConnections::Connect_in_msg_socket(std::size_t index, std::unique_ptr<Socket> pending) {
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
}

void MessageConnections::on_accept(std::unique_ptr<Socket> pending) {
  trap(log_, "msg_Accept: ", [&] {
    const std::size_t index = free_index();
    set_up(index, [&] {
      Connect_in_msg_socket(index, std::move(pending));
      // Kept: tested after the accept, against the count of the last list refresh.
      if (typed_number(form_.max_in_host.text()) > count_in_) return load_timeout(index);
      unload(index);
      set_hosts_stat(index, {.status = "Sock freed", .state = kFreed});
    });
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
    set_up(index, [&] { start_connect(index, address, port, host_name); });
  });
}

void MessageConnections::start_connect(std::size_t index, const std::string& address,
                                       std::int16_t port, const std::string& host_name) {
  MessageSocket& element = load(index);
  const bool by_name = form_.connect_dns.checked() && host_name.size() > 2;
  element.socket = network_.connect(by_name ? host_name : address, unsigned_port(port),
                                    kConnectTimeout_ms, element);
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
}

void MessageConnections::msgwrite(std::size_t index, std::string_view data) {
  if (run_.waits_for(index)) run_.write();
  socket_for(index, data).write(data);
  counters_.bytes_sent += static_cast<double>(data.size());
}

void MessageConnections::take_copies(std::size_t connection, std::string_view bytes,
                                     std::span<const std::uint32_t> ends) {
  socket_for(connection, bytes).write_run(bytes, ends);
  counters_.bytes_sent += static_cast<double>(bytes.size());
  count_up(slots_.at(connection).sent, ends.size());
}

Socket& MessageConnections::socket_for(std::size_t index, std::string_view data) {
  const auto& element = elements_.at(index);
  if (!element || !element->socket) throw PlatformError(Errc::not_connected);
  // Kept: the length travels as a signed 16-bit number.
  if (data.size() > kMostAtOnce) throw PlatformError(Errc::overflow);
  return *element->socket;
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
  if (change.state != 0 && change.state != slot.state) set_state(slot, index, change.state);
  form_.lHosts.redraw();
}

void MessageConnections::set_state(ConnectionSlot& slot, std::size_t index, std::int16_t state) {
  const auto place = std::lower_bound(connected_.begin(), connected_.end(), index);
  if (slot.state == kConnected) connected_.erase(place);
  if (state == kConnected) connected_.insert(place, index);
  if (slot.state == kOpening) --opening_;
  if (state == kOpening) ++opening_;
  const bool fell = slot.state == kConnected && watch_ != nullptr;
  slot.state = state;
  note_opening_change();
  if (fell) watch_->fell(index);
}

void MessageConnections::note_opening_change() {
  const bool full = opening_ >= kMaxOpening;
  if (listener_) listener_->set_accepting(!full);
  if (full) opening_check_->set_enabled(true);
}

// A limit of the platform, told as the end of the connection.
void MessageConnections::end_old_openings() {
  if (opening_ < kMaxOpening) opening_check_->set_enabled(false);
  const std::int64_t oldest = loop_.now_ms() - kMaxOpeningMs;
  for (std::size_t i = 1; i <= slots_.upper_bound(); ++i) {
    if (slots_.at(i).state != kOpening || elements_.at(i)->loaded_ms > oldest) continue;
    elements_.at(i)->socket.reset();
    msg_Disconnect(i);
  }
}

bool MessageConnections::connected(std::size_t index) const {
  return slots_.has(index) && slots_.at(index).state == kConnected;
}

std::size_t MessageConnections::unsent(std::size_t index) const {
  if (!elements_.has(index)) return 0;
  const auto& element = elements_.at(index);
  return element && element->socket ? element->socket->unsent() : 0;
}

bool MessageConnections::loaded(std::size_t index) const {
  return elements_.has(index) && elements_.at(index) != nullptr;
}

std::uint64_t MessageConnections::generation(std::size_t index) const {
  return loaded(index) ? elements_.at(index)->generation : 0;
}

bool MessageConnections::stands(std::size_t index) const {
  return loaded(index) && elements_.at(index)->socket && elements_.at(index)->socket->connected();
}

void MessageConnections::recount() {
  count_in_ = count_out_ = 0;
  for (const std::size_t index : connected_) {
    std::int16_t& count = slots_.at(index).direction == "In" ? count_in_ : count_out_;
    ++count;
  }
}

void MessageConnections::behaviour_changed() {
  if (behaviour_.whole_descriptors) return;
  for (const auto& element : elements_) {
    if (element) element->pending.reset();
  }
}

void MessageConnections::close_all() {
  *alive_ = false;
  opening_check_->set_enabled(false);
  for (std::size_t i = 1; i <= slots_.upper_bound(); ++i) {
    if (slots_.at(i).state >= kOpening) routes_.clear_routes(i);
    unload(i);
  }
  listener_.reset();
  alive_ = std::make_shared<bool>(true);
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
  trap(log_, "msg_Timeout: ", [&] {
    set_hosts_stat(index, {.status = "No response", .state = kClosing});
    free_msg_socket(index);
    log_.debug_log("Time-out on sock: " + std::to_string(index));
  });
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
  const bool good = trap(log_, "msg_Read: ", [&] {
    MessageSocket& element = *elements_.at(index);
    counters_.bytes_received += static_cast<double>(data.size());
    // Within a descriptor no chunk is anything but a part of it.
    const bool in_step = !element.pending || element.pending->in_step();
    if (in_step && data == kHello) {
      element.socket->write_alone(kWelcome);
      counters_.bytes_sent += static_cast<double>(kWelcome.size());
      connection_stands(index, "IN");
    } else if (in_step && data == kWelcome) {
      connection_stands(index, "OUT");
    } else if (in_step && data.starts_with("GET ")) {
      log_.debug_log("Request a file of mine on msg port: " + std::string(data));
    } else {
      if (!element.freeing) restart(*element.timer);
      ConnectionSlot& slot = slots_.at(index);
      slot.silence_ticks = 0;
      slot.status = "Connected";
      deliver(index, data);
    }
  });
  if (!good) drop_rest(index);
}

// Kept: a chunk is framed as it comes, what is not whole at its end is lost.
void MessageConnections::deliver(std::size_t index, std::string_view data) {
  if (!behaviour_.whole_descriptors) return hand_over(index, data, true);
  std::string joined;  // outlives the element, which the handling may end
  auto& pending = elements_.at(index)->pending;
  if (!pending) pending = std::make_unique<PendingBytes>();
  const std::string_view whole = pending->complete(data, loop_.now_ms(), joined);
  if (!whole.empty()) hand_over(index, whole, true);
}

// The framing handles some descriptors of a chunk at a time, and all chunks together get a few
// milliseconds of a turn; what is left waits in line. While it does, nothing more is read from its
// connection, so that it stays the only one.
void MessageConnections::hand_over(std::size_t index, std::string_view data, bool first) {
  const std::uint64_t generation = elements_.at(index)->generation;
  const bool must_wait = spent_ms_ >= kFramingMs && !elements_.at(index)->in_line;
  const std::size_t done = must_wait ? 0 : cut(index, data, first);
  const auto& element = elements_.at(index);
  if (!element || element->generation != generation || !element->socket) return;
  if (!must_wait && done >= data.size()) {
    let_go_of_rest(*element);
    if (element->in_line) element->socket->set_reading(true);
    element->in_line = false;
    return;
  }
  if (element->in_line) {
    element->rest_done += done;
  } else {
    keep_rest(*element, data.substr(done));
    element->in_line = true;
    element->rest_done = 0;
    element->socket->set_reading(false);
  }
  element->rest_begun = !must_wait;
  line_.push_back({index, generation});
  plan_line();
}

std::size_t MessageConnections::cut(std::size_t index, std::string_view data, bool first) {
  static_assert(kDescriptorsPerTurn % kDescriptorsPerLook == 0);
  const WrittenAtEnd written{run_};
  std::size_t done = 0;
  int left = kDescriptorsPerTurn;
  std::int64_t since_ms = loop_.now_ms();
  do {
    done += framing_->Format_in_data(data.substr(done), index, first, kDescriptorsPerLook);
    first = false;
    left -= kDescriptorsPerLook;
    if (done >= data.size() || left <= 0) run_.write();  // in the time that is counted
    note_spent(since_ms);
  } while (done < data.size() && left > 0 && spent_ms_ < kFramingMs);
  return done;
}

// What the framing takes is counted against this turn; a continuation runs in the next one.
void MessageConnections::note_spent(std::int64_t& since_ms) {
  const std::int64_t now_ms = loop_.now_ms();
  const std::int64_t took_ms = now_ms - since_ms;
  since_ms = now_ms;
  if (took_ms > 0 && spent_ms_ == 0) {
    loop_.post([this, alive = alive_] {
      if (*alive) spent_ms_ = 0;
    });
  }
  spent_ms_ += took_ms;
}

void MessageConnections::keep_rest(MessageSocket& element, std::string_view rest) {
  if (waiting_bytes_ + rest.size() > kMaxWaitingBytes) throw PlatformError(Errc::no_buffer_space);
  element.rest.assign(rest);
  waiting_bytes_ += rest.size();
}

// With its memory: a large chunk's does not stay with the slot.
void MessageConnections::let_go_of_rest(MessageSocket& element) {
  waiting_bytes_ -= element.rest.size();
  std::string().swap(element.rest);
}

void MessageConnections::plan_line() {
  if (line_planned_) return;
  loop_.post([this, alive = alive_] {
    if (*alive) serve_line();
  });
  line_planned_ = true;
}

// One at least, so that the line moves however busy the turn was; those not done go to its end.
void MessageConnections::serve_line() {
  line_planned_ = false;
  bool served = false;
  for (std::size_t left = line_.size(); left > 0 && !(served && spent_ms_ >= kFramingMs); --left) {
    const Waiting next = line_.front();
    line_.pop_front();
    served = continue_chunk(next.index, next.generation) || served;
  }
  if (line_.empty() || trap(log_, "msg_Read: ", [&] { plan_line(); })) return;
  for (const Waiting& waiting : line_) drop_rest(waiting.index);
  line_.clear();
}

bool MessageConnections::continue_chunk(std::size_t index, std::uint64_t generation) {
  const auto& element = elements_.at(index);
  if (!element || element->generation != generation || element->rest.empty()) return false;
  const bool good = trap(log_, "msg_Read: ", [&] {
    hand_over(index, std::string_view(element->rest).substr(element->rest_done),
              !element->rest_begun);
  });
  if (!good) drop_rest(index);
  return true;
}

// What could not be gone on with is lost, and the connection reads on.
void MessageConnections::drop_rest(std::size_t index) {
  const auto& element = elements_.at(index);
  if (!element || !element->socket || !element->in_line) return;
  let_go_of_rest(*element);
  element->rest_done = 0;
  element->in_line = false;
  element->socket->set_reading(true);
}

void MessageConnections::timeout_msg_t_Timer(std::size_t index) {
  ConnectionSlot& slot = slots_.at(index);
  if (slot.state == kOpening) {
    set_hosts_stat(index, {.status = "Not accepted", .state = kClosing});
  } else if (slot.state == kConnected) {
    set_hosts_stat(index, {.add_tick = true});
    const std::int16_t ticks = slot.silence_ticks;
    set_hosts_stat(index, {.status = "Waiting.." + std::to_string(ticks)});
    // Kept: nothing is sent to learn whether a silent peer is still there.
    if (ticks < kSilentTicks) {
      if (watch_ != nullptr) watch_->silent(index, ticks);
      return;
    }
    set_hosts_stat(index, {.status = "No Data, Disconnecting", .state = kClosing});
  } else {
    return;
  }
  free_msg_socket(index);
}

void MessageConnections::free_msg_socket(std::size_t index) {
  routes_.clear_routes(index);
  const auto& element = elements_.at(index);
  if (!element) return;
  element->pending.reset();
  waiting_bytes_ -= element->rest.size();
  element->rest.clear();  // what waits in line is found to be gone
  if (!std::exchange(element->freeing, true)) restart(*element->timer);
}

void MessageConnections::free_msgsock_t_Timer(std::size_t index) {
  set_hosts_stat(index, {.status = "Sock freed", .state = kFreed});
  routes_.clear_routes(index);
  unload(index);
}

void MessageConnections::disconnect(std::size_t index) {
  if (!slots_.has(index) || slots_.at(index).state < kOpening) return;
  if (watch_ != nullptr) watch_->left(index);
  const auto& element = elements_.at(index);
  if (element) element->socket.reset();
  set_hosts_stat(index, {.status = "Disconnecting", .state = kClosing});
  free_msg_socket(index);
}

}  // namespace velmora
