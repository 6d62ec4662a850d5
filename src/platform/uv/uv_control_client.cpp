#include "platform/uv/uv_control_client.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "platform/control_channel.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} << 10;
constexpr int kPartingMs = 3000;

}  // namespace

UvControlClient::UvControlClient(UvLoop& loop, Descriptor connection, std::uint64_t number,
                                 ControlClientEvents& events)
    : loop_(loop),
      number_(number),
      events_(&events),
      watch_(loop, std::move(connection)),
      outbox_(loop, watch_.descriptor(), [this] { loop_.request_turn(); }) {
  watch_.set_events(*this);
  watch_.set_reading(true);
}

void UvControlClient::on_readable() {
  const auto room = loop_.read_buffer(kReadBytes);
  const ssize_t count =
      uninterrupted([&] { return ::recv(watch_.descriptor(), room.data(), kReadBytes, 0); });
  if (count < 0 && errno == EAGAIN) return;
  if (count <= 0) {
    watch_.set_reading(false);
    return end();
  }
  incoming_.append(room.data(), static_cast<std::size_t>(count));
  dispatch_lines();
  if (incoming_.size() > kMaxControlLine) end();
}

void UvControlClient::on_writable() {
  outbox_.room_came();
  watch_.set_writing(false);
  loop_.request_turn();
}

void UvControlClient::dispatch_lines() {
  std::size_t start = 0;
  for (;;) {
    const std::size_t line_end = incoming_.find('\n', std::max(start, searched_));
    if (events_ == nullptr || line_end == std::string::npos) break;
    if (line_end - start > kMaxControlLine) return end();
    events_->on_line(number_, std::string_view(incoming_).substr(start, line_end - start));
    start = line_end + 1;
  }
  incoming_.erase(0, start);
  searched_ = incoming_.size();
}

void UvControlClient::end() {
  if (events_ == nullptr) return;
  std::exchange(events_, nullptr)->on_end(number_);
}

void UvControlClient::end_later() {
  loop_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) end();
  });
}

void UvControlClient::send_line(std::string_view line) {
  if (events_ == nullptr) return;
  outbox_.push(line, false);
  outbox_.push("\n", false);
  if (outbox_.unsent() >= kGatheredBytes) flush();
  if (outbox_.unsent() > kMaxControlUnsent) end_later();
  loop_.request_turn();
}

void UvControlClient::flush() {
  const UvOutbox::Left left = outbox_.flush();
  watch_.set_writing(left == UvOutbox::Left::waits);
  if (events_ == nullptr) {
    gone_ = gone_ || left == UvOutbox::Left::all || left == UvOutbox::Left::failed;
  } else if (left == UvOutbox::Left::failed) {
    end_later();
  }
}

void UvControlClient::part() {
  events_ = nullptr;
  watch_.set_reading(false);
  parting_limit_ = loop_.make_timer(kPartingMs, [this] {
    gone_ = true;
    loop_.request_turn();
  });
  parting_limit_->set_enabled(true);
}

}  // namespace velmora::uv
