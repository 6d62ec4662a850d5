#include "platform/uv/uv_connection.h"

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

constexpr std::size_t kSmallestRead = std::size_t{64} << 10;
constexpr std::size_t kLargestRead = std::size_t{8} << 20;
constexpr int kLeavingMs = 5000;   // the last bytes and the end have that long to leave
constexpr int kDrainingMs = 3000;  // the peer has that long to end too

// The kernel counts: it alone knows when the peer last took something. A kernel that cannot leaves
// the peer its time.
void limit_stall(int fd, int most_ms) {
  const unsigned int limit = static_cast<unsigned int>(most_ms);
  static_cast<void>(setsockopt(fd, IPPROTO_TCP, TCP_USER_TIMEOUT, &limit, sizeof limit));
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
  dialer_ = std::make_unique<UvDialer>(network_.loop(), network_.bind_address(),
                                       [this](Handle<uv_tcp_t> tcp) { dialled(std::move(tcp)); });
}

void UvConnection::dialled(Handle<uv_tcp_t> tcp) {
  const auto self = shared_from_this();
  dialer_.reset();
  if (tcp != nullptr) {
    stand(std::move(tcp));
    if (events_ != nullptr) events_->on_connect();
  } else {
    over();
    if (events_ != nullptr) events_->on_connect_failed();
  }
}

void UvConnection::stand(Handle<uv_tcp_t> tcp) {
  tcp_ = std::move(tcp);
  tcp_->data = this;
  phase_ = Phase::standing;
  uv_tcp_nodelay(tcp_.get(), 1);
  limit_stall(descriptor_of(tcp_), network_.max_stall_ms());
  const EndpointText peer = peer_end(descriptor_of(tcp_));
  if (!peer.address.empty()) {
    peer_address_ = peer.address;
    peer_port_ = peer.port;
  }
  local_port_ = local_end(descriptor_of(tcp_)).port;
  outbox_.emplace(network_.loop(), as_stream(tcp_), [this] { network_.flush_later(*this); });
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
  const bool wanted =
      tcp_ != nullptr && !peer_ended_ &&
      (phase_ == Phase::parting || (phase_ == Phase::standing && reading_ && events_ != nullptr));
  if (wanted == read_started_ || tcp_ == nullptr) return;
  read_started_ = wanted;
  if (!wanted) {
    uv_read_stop(as_stream(tcp_));
    return;
  }
  uv_read_start(
      as_stream(tcp_),
      [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) noexcept {
        static_cast<UvConnection*>(handle->data)->allocate(buffer);
      },
      [](uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) noexcept {
        static_cast<UvConnection*>(stream->data)->read_came(count, buffer);
      });
  network_.loop().work_begun();
}

// All that is queued must fit one read; the room beyond it shows libuv that there is no more.
void UvConnection::allocate(uv_buf_t* buffer) const {
  int queued = 0;
  if (ioctl(descriptor_of(tcp_), FIONREAD, &queued) != 0) queued = 0;
  const std::size_t wanted = static_cast<std::size_t>(std::max(queued, 0)) + kSmallestRead;
  const auto room = network_.loop().read_buffer(std::min(wanted, kLargestRead));
  *buffer = uv_buf_init(room.data(), static_cast<unsigned int>(room.size()));
}

void UvConnection::read_came(ssize_t count, const uv_buf_t* buffer) {
  const auto self = shared_from_this();
  if (count < 0) return ended(count != UV_EOF);
  if (count == 0 || phase_ != Phase::standing || events_ == nullptr) return;
  events_->on_read({buffer->base, static_cast<std::size_t>(count)});
}

void UvConnection::ended(bool reset) {
  peer_ended_ = true;
  read_started_ = false;  // libuv reads no further
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
  network_.unsent_changed(counted_unsent_, counted_unsent_ + data.size());
  counted_unsent_ += data.size();
  if (outbox_->unsent() >= kGatheredBytes) {
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
  switch (outbox_->flush()) {
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

// What the peer sent before it went is still read; the post comes after that.
void UvConnection::write_failed() {
  if (phase_ == Phase::parting) return over();
  if (broken_) return;
  broken_ = true;
  network_.loop().post([self = shared_from_this()] {
    if (self->phase_ == Phase::standing) self->ended(true);
  });
}

std::size_t UvConnection::queued() const { return !outbox_ || broken_ ? 0 : outbox_->unsent(); }

std::size_t UvConnection::unacknowledged() const {
  if (!connected()) return 0;
  int queued = 0;
  if (ioctl(descriptor_of(tcp_), SIOCOUTQ, &queued) != 0) queued = 0;
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
    ::shutdown(descriptor_of(tcp_), SHUT_WR);
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
  tcp_.reset();
  count_unsent();
  network_.forget(*this);
}

}  // namespace velmora::uv
