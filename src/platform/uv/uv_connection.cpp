#include "platform/uv/uv_connection.h"

#include <linux/sock_diag.h>
#include <linux/sockios.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/uv/uv_address.h"
#include "platform/uv/uv_loop.h"
#include "platform/uv/uv_network.h"

namespace velmora::uv {
namespace {

// Behind what a read brings at most: room for the rest of the string in which it ends.
constexpr std::size_t kMostBehind = std::size_t{64} << 10;
// Longer than a burst of packets pauses, shorter than anybody takes to send two things apart.
constexpr int kSettleMs = 40;
constexpr int kMostSettleTimes = 25;                              // behind a packet that is lost
constexpr std::int64_t kLongestSettleMs = 2000;                   // in all, whatever still comes
constexpr std::size_t kMostSettling = std::size_t{8} << 20;       // of one connection
constexpr std::size_t kMaxSettlingTotal = std::size_t{32} << 20;  // of all of them
// Where so much is gathered on all connections that it no longer lies in a processor's cache, what
// is worth a write of its own leaves while it still does.
constexpr std::size_t kMuchForAll = std::size_t{4} << 20;
constexpr std::size_t kWorthAWrite = std::size_t{8} << 10;
constexpr int kLeavingMs = 5000;   // the last bytes and the end have that long to leave
constexpr int kDrainingMs = 3000;  // the peer has that long to end too

// The kernel counts: it alone knows when the peer last took something. A kernel that cannot leaves
// the peer its time.
void limit_stall(int fd, int most_ms) {
  const unsigned int limit = static_cast<unsigned int>(most_ms);
  static_cast<void>(setsockopt(fd, IPPROTO_TCP, TCP_USER_TIMEOUT, &limit, sizeof limit));
}

// Whether the kernel has bytes that cannot be read yet: one before them was lost, and is sent again
// later than any pause of a sender would be. Asked when there is nothing to read.
bool waits_for_lost(int fd) {
  std::uint32_t memory[SK_MEMINFO_VARS] = {};
  socklen_t size = sizeof memory;
  return getsockopt(fd, SOL_SOCKET, SO_MEMINFO, memory, &size) == 0 &&
         memory[SK_MEMINFO_RMEM_ALLOC] > 0;
}

void send_at_once(int fd) {
  const int on = 1;
  static_cast<void>(setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on));
}

}  // namespace

UvConnection::UvConnection(UvNetwork& network, SocketEvents* events)
    : network_(network), events_(events) {}

void UvConnection::dial(const std::string& host, std::uint16_t port, int timeout_ms) {
  peer_address_ = host;
  peer_port_ = port;
  make_dialer();
  dialer_->start(host, port, timeout_ms);
}

void UvConnection::fail_later(const std::string& host, std::uint16_t port) {
  peer_address_ = host;
  peer_port_ = port;
  make_dialer();
  dialer_->fail_later();
}

void UvConnection::make_dialer() {
  dialer_ = std::make_unique<UvDialer>(
      network_.loop(), network_.bind_address(),
      [this](std::unique_ptr<UvWatch> connected) { dialled(std::move(connected)); });
}

void UvConnection::dialled(std::unique_ptr<UvWatch> connected) {
  const auto self = shared_from_this();
  dialer_.reset();
  if (connected != nullptr) {
    stand(std::move(connected));
    if (events_ != nullptr) events_->on_connect();
  } else {
    over();
    if (events_ != nullptr) events_->on_connect_failed();
  }
}

void UvConnection::stand(std::unique_ptr<UvWatch> connected) {
  watch_ = std::move(connected);
  watch_->set_events(*this);
  phase_ = Phase::standing;
  const int fd = watch_->descriptor();
  send_at_once(fd);
  limit_stall(fd, network_.max_stall_ms());
  const EndpointText peer = peer_end(fd);
  if (!peer.address.empty()) {
    peer_address_ = peer.address;
    peer_port_ = peer.port;
  }
  local_port_ = local_end(fd).port;
  outbox_.emplace(network_.loop(), fd, [this] { network_.flush_later(*this); });
  update_reading();
}

void UvConnection::set_events(SocketEvents* events) {
  events_ = events;
  update_reading();
  if (events_ == nullptr || !disconnect_waits_) return;
  network_.loop().post([self = shared_from_this()] {
    if (self->disconnect_waits_) self->tell_disconnect();
  });
}

void UvConnection::set_reading(bool reading) {
  reading_ = reading;
  update_reading();
}

void UvConnection::update_reading() {
  if (watch_ == nullptr) return;
  watch_->set_reading(
      !peer_ended_ &&
      (phase_ == Phase::parting || (phase_ == Phase::standing && reading_ && events_ != nullptr)));
}

// All that is queued, so that it ends where a segment ends; or only what is lacking. Where more is
// queued than one read brings, the rest of its last string is read with it.
void UvConnection::on_readable() {
  const auto self = shared_from_this();
  const auto room = network_.loop().read_buffer(kMostReadAtOnce + kMostBehind);
  std::size_t most = kMostReadAtOnce;
  if (settling_ != nullptr && !broken_) most = std::min(settling_->lacks, most);
  const ssize_t count = receive(room.first(most));
  if (count < 0 && errno == EAGAIN) return;
  if (count <= 0) return ended(count < 0);
  if (phase_ != Phase::standing || events_ == nullptr) return;
  std::size_t bytes = static_cast<std::size_t>(count);
  if (settling_ != nullptr) return lacking_came({room.data(), bytes});
  const bool more_queued = bytes == most;
  std::size_t lacking = events_->lacks({room.data(), bytes});
  while (more_queued && lacking > 0 && lacking <= room.size() - bytes) {
    const ssize_t more = receive(room.subspan(bytes, lacking));
    if (more <= 0) break;
    bytes += static_cast<std::size_t>(more);
    lacking = events_->lacks({room.data(), bytes});
  }
  if (lacking != kLacksAllQueued) return arrived({room.data(), bytes}, lacking);
  if (more_queued) return read_all_queued({room.data(), bytes});
  arrived({room.data(), bytes}, 0);
}

void UvConnection::read_all_queued(std::string data) {
  const auto room = network_.loop().read_buffer(kMostReadAtOnce);
  while (data.size() < kMostSettling) {
    const ssize_t more = receive(room);
    if (more <= 0) break;
    data.append(room.data(), static_cast<std::size_t>(more));
  }
  arrived(data, 0);
}

ssize_t UvConnection::receive(std::span<char> room) const {
  return uninterrupted([&] { return ::recv(watch_->descriptor(), room.data(), room.size(), 0); });
}

void UvConnection::on_writable() {
  const auto self = shared_from_this();
  outbox_->room_came();
  flush();
}

// What is lacking is looked for again only when it has come: the header, then the payload.
void UvConnection::lacking_came(std::string_view data) {
  const std::size_t left = settling_->lacks - std::min(settling_->lacks, data.size());
  data = settling_->bytes.append(data);
  if (left > 0) return settle(data, left);
  const std::size_t lacking = events_->lacks(data);
  arrived(data, lacking == kLacksAllQueued ? 0 : lacking);
}

void UvConnection::arrived(std::string_view data, std::size_t lacks) {
  if (lacks > 0 && data.size() < kMostSettling) return settle(data, lacks);
  if (settling_ != nullptr) return announce_settled();
  events_->on_read(data);
}

// The time counts from when something last came, and ends at its limit whatever comes.
void UvConnection::settle(std::string_view data, std::size_t lacks) {
  const std::int64_t now_ms = network_.loop().now_ms();
  if (settling_ == nullptr) {
    if (network_.settling() + data.size() > kMaxSettlingTotal) return events_->on_read(data);
    settling_ = std::make_unique<Settling>(
        Settling{std::string(data), lacks, 0, now_ms + kLongestSettleMs, 0, nullptr});
    settling_->limit = network_.loop().make_timer(kSettleMs, [this] {
      const auto self = shared_from_this();
      if (!reading_ || events_ == nullptr) return;
      if (waits_for_lost(watch_->descriptor()) && --settling_->times_left > 0) return;
      announce_settled();
    });
  }
  count_settling();
  if (now_ms >= settling_->until_ms || network_.settling() > kMaxSettlingTotal) {
    return announce_settled();
  }
  settling_->lacks = lacks;
  settling_->times_left = kMostSettleTimes;
  settling_->limit->set_enabled(false);
  settling_->limit->set_enabled(true);
}

void UvConnection::count_settling() {
  network_.settling_changed(settling_->counted, settling_->bytes.size());
  settling_->counted = settling_->bytes.size();
}

std::unique_ptr<UvConnection::Settling> UvConnection::end_settling() {
  if (settling_ != nullptr) network_.settling_changed(settling_->counted, 0);
  return std::exchange(settling_, nullptr);
}

void UvConnection::announce_settled() {
  const auto settled = end_settling();
  events_->on_read(settled->bytes);
}

void UvConnection::ended(bool reset) {
  if (settling_ != nullptr && events_ != nullptr) {
    announce_settled();
    // Who takes it bit by bit has stopped the reading; the end is found again when it goes on.
    if (phase_ == Phase::standing && events_ != nullptr && !reading_) return;
  }
  peer_ended_ = true;
  update_reading();
  const bool stood = phase_ == Phase::standing;
  if (reset) {
    over();
  } else if (stood) {
    part();
  } else {
    network_.flush_later(*this);
  }
  if (stood) tell_disconnect();
}

void UvConnection::tell_disconnect() {
  disconnect_waits_ = events_ == nullptr;
  if (events_ != nullptr) std::exchange(events_, nullptr)->on_disconnect();
}

void UvConnection::write(std::string_view data, bool alone) {
  if (!connected() || !fits(data.size())) make_room(data.size());
  outbox_->push(data, alone);
  pushed(data.size());
}

void UvConnection::write_run(std::string_view data, std::span<const std::uint32_t> ends) {
  if (!connected() || !fits(data.size())) make_room(data.size());
  outbox_->push_run(data, ends);
  pushed(data.size());
}

void UvConnection::pushed(std::size_t bytes) {
  network_.unsent_changed(counted_unsent_, counted_unsent_ + bytes);
  counted_unsent_ += bytes;
  const bool much = network_.unsent() > kMuchForAll;
  if (outbox_->failed() || outbox_->unsent() >= (much ? kWorthAWrite : kGatheredBytes)) {
    flush();
  } else if (!flush_planned_) {
    network_.flush_later(*this);
  }
}

void UvConnection::make_room(std::size_t bytes) {
  if (connected()) flush();
  if (connected() && !fits(bytes)) network_.make_room();
  if (!connected()) throw PlatformError(Errc::not_connected);
  if (!fits(bytes)) throw PlatformError(Errc::no_buffer_space);
}

// Of a connection that stands.
bool UvConnection::fits(std::size_t bytes) const {
  return bytes <= kMaxUnsentPerSocket && outbox_->unsent() + bytes <= kMaxUnsentPerSocket &&
         network_.unsent() + bytes <= kMaxUnsentTotal;
}

void UvConnection::flush_planned() {
  flush_planned_ = false;
  flush();
}

void UvConnection::flush() {
  if (phase_ != Phase::standing && phase_ != Phase::parting) return;
  const UvOutbox::Left left = outbox_->flush();
  if (const bool waits = left == UvOutbox::Left::waits; waits != awaits_room_) {
    watch_->set_writing(awaits_room_ = waits);
  }
  switch (left) {
    case UvOutbox::Left::all:
      if (phase_ == Phase::parting) send_end();
      break;
    case UvOutbox::Left::waits:
      break;
    case UvOutbox::Left::held:
      network_.flush_later(*this);
      break;
    case UvOutbox::Left::failed:
      write_failed();
      break;
  }
  count_unsent();
}

void UvConnection::write_failed() {
  if (phase_ == Phase::parting) return over();
  if (broken_) return;
  broken_ = true;
  end_when_read();
}

// What the peer sent before it went is still read, a part of it in every turn.
void UvConnection::end_when_read() {
  network_.loop().post([self = shared_from_this()] {
    if (self->phase_ != Phase::standing) return;
    char next = 0;
    const bool more = ::recv(self->watch_->descriptor(), &next, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
    if (more && self->events_ != nullptr) return self->end_when_read();
    self->ended(true);
  });
}

std::size_t UvConnection::queued() const { return !outbox_ || broken_ ? 0 : outbox_->unsent(); }

std::size_t UvConnection::unacknowledged() const {
  if (!connected()) return 0;
  int queued = 0;
  if (ioctl(watch_->descriptor(), SIOCOUTQ, &queued) != 0) queued = 0;
  return unsent() + static_cast<std::size_t>(std::max(queued, 0));
}

void UvConnection::count_unsent() {
  const std::size_t now = queued();
  network_.unsent_changed(counted_unsent_, now);
  counted_unsent_ = now;
}

void UvConnection::close() {
  const auto self = shared_from_this();
  events_ = nullptr;
  if (phase_ == Phase::connecting) return over();
  if (phase_ != Phase::standing) return;
  if (broken_) return over();
  part();
}

void UvConnection::part() {
  phase_ = Phase::parting;
  limit_parting(kLeavingMs);
  update_reading();
  network_.flush_later(*this);
}

void UvConnection::send_end() {
  if (!std::exchange(end_sent_, true)) {
    ::shutdown(watch_->descriptor(), SHUT_WR);
    limit_parting(kDrainingMs);
  }
  if (peer_ended_) over();
}

void UvConnection::limit_parting(int ms) {
  parting_limit_ = network_.loop().make_timer(ms, [this] {
    const auto self = shared_from_this();
    over();
  });
  parting_limit_->set_enabled(true);
}

void UvConnection::abort() {
  events_ = nullptr;
  over();
}

void UvConnection::over() {
  if (phase_ == Phase::over) return;
  phase_ = Phase::over;
  const auto self = shared_from_this();
  dialer_.reset();
  parting_limit_.reset();
  outbox_.reset();
  end_settling();
  watch_.reset();
  count_unsent();
  network_.forget(*this);
}

}  // namespace velmora::uv
