#include "platform/uv/uv_outbox.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "platform/uv/uv_descriptor.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

// What follows a string that leaves alone waits so long, so that the peer can have read the string:
// a turn of our loop says nothing about the peer's.
constexpr int kHoldMs = 20;

// A segment loses so much to the acknowledgement of packets that came out of order, for as long as
// some are missing; a full one would be split then.
constexpr int kOptionBytes = 36;

// Only a TCP connection has segments.
std::size_t most_in_a_segment(int descriptor) {
  int bytes = 0;
  socklen_t size = sizeof bytes;
  if (getsockopt(descriptor, IPPROTO_TCP, TCP_MAXSEG, &bytes, &size) != 0 || bytes <= 0) {
    return std::numeric_limits<std::size_t>::max();
  }
  return static_cast<std::size_t>(std::max(bytes - kOptionBytes, 1));
}

}  // namespace

UvOutbox::UvOutbox(UvLoop& loop, int descriptor, std::function<void()> on_released)
    : largest_piece_(most_in_a_segment(descriptor)),
      descriptor_(descriptor),
      loop_(loop),
      spares_(loop.spare_buffers()),
      on_released_(std::move(on_released)) {}

void UvOutbox::push(std::string_view data, bool alone) {
  if (data.empty() || failed_) return;
  if (alone) {
    gather();
    segments_.push_back({std::string(data), {}, true});
    bytes_ += data.size();
    return;
  }
  if (data.size() >= kGatheredBytes) return push_long(data);
  keep(data);
}

// The packets of an upload: copying them first costs as much as reading them.
void UvOutbox::push_long(std::string_view data) {
  const std::string_view rest = leave_at_once(data);
  try {
    keep(rest);
  } catch (const std::bad_alloc&) {
    if (rest.size() < data.size())
      fail();  // whoever writes all of it again would send a part twice
    throw;
  }
}

void UvOutbox::keep(std::string_view data) {
  if (data.empty() || failed_) return;
  if (gathered_.bytes.empty()) {
    gathered_.bytes = spares_.take();
  } else if (!fits(data.size())) {
    cut();
  }
  gathered_.bytes += data;
  bytes_ += data.size();
}

// Returns the rest, if the kernel did not take all.
std::string_view UvOutbox::leave_at_once(std::string_view data) {
  if (bytes_ > 0 || full_ || failed_ || hold_) return data;
  last_left_in_ = loop_.turn();
  while (!data.empty()) {
    const std::size_t taken = send(data);
    if (taken == 0) break;
    data.remove_prefix(taken);
  }
  return data;
}

// How many of the bytes the kernel took: none when it is full, or the stream has failed.
std::size_t UvOutbox::send(std::string_view bytes) {
  const ssize_t count = uninterrupted([&] {
    return ::send(descriptor_, bytes.data(), bytes.size(), MSG_EOR | MSG_DONTWAIT | MSG_NOSIGNAL);
  });
  if (count >= 0) return static_cast<std::size_t>(count);
  full_ = errno == EAGAIN;
  if (!full_) fail();
  return 0;
}

void UvOutbox::push_run(std::string_view data, std::span<const std::uint32_t> ends) {
  if (fits(data.size())) return push(data, false);
  std::size_t begin = 0;
  for (const std::size_t end : ends) {
    push(data.substr(begin, end - begin), false);
    begin = end;
  }
  push(data.substr(begin), false);
}

// Into the piece that is being gathered.
bool UvOutbox::fits(std::size_t bytes) const {
  return gathered_.bytes.size() - piece_begin_ + bytes <= largest_piece_;
}

void UvOutbox::cut() {
  piece_begin_ = gathered_.bytes.size();
  gathered_.ends.push_back(static_cast<std::uint32_t>(piece_begin_));
}

// What is gathered becomes a segment.
void UvOutbox::gather() {
  if (gathered_.bytes.empty()) return;
  segments_.push_back(std::exchange(gathered_, {}));
  piece_begin_ = 0;
}

UvOutbox::Left UvOutbox::flush() {
  while (!failed_) {
    if (full_) return Left::waits;
    if (bytes_ == 0) return Left::all;
    if (leaving_.bytes.empty()) {
      if (hold_) return Left::held;
      if (!segments_.empty() && segments_.front().alone && last_left_in_ == loop_.turn()) {
        loop_.request_turn();
        return Left::held;
      }
      take_first();
    }
    send_leaving();
  }
  return Left::failed;
}

// An idle connection keeps no memory for what it sent.
void UvOutbox::take_first() {
  if (segments_.empty()) {
    std::swap(leaving_, gathered_);
    piece_begin_ = 0;
  } else {
    leaving_ = std::move(segments_.front());
    segments_.erase(segments_.begin());
    if (segments_.empty()) segments_.shrink_to_fit();
  }
  // A route may change; that matters to those who send much at a time.
  if (leaving_.bytes.size() > largest_piece_ / 2) largest_piece_ = most_in_a_segment(descriptor_);
}

void UvOutbox::send_leaving() {
  const std::string_view bytes = leaving_.bytes;
  while (sent_ < bytes.size()) {
    const std::size_t end =
        next_end_ < leaving_.ends.size() ? leaving_.ends[next_end_] : bytes.size();
    const std::size_t taken = send(bytes.substr(sent_, end - sent_));
    if (taken == 0) return;
    sent_ += taken;
    bytes_ -= taken;
    if (sent_ == end) ++next_end_;
  }
  left();
}

void UvOutbox::left() {
  last_left_in_ = loop_.turn();
  const bool alone = leaving_.alone;
  spares_.give(std::exchange(leaving_.bytes, {}));
  if (!leaving_.ends.empty()) leaving_.ends = {};
  leaving_.alone = false;
  sent_ = next_end_ = 0;
  if (!alone) return;
  hold_ = loop_.make_timer(kHoldMs, [this] {
    hold_.reset();
    on_released_();
  });
  hold_->set_enabled(true);
}

void UvOutbox::fail() {
  failed_ = true;
  segments_.clear();
  gathered_ = {};
  leaving_ = {};
  sent_ = next_end_ = bytes_ = piece_begin_ = 0;
}

}  // namespace velmora::uv
