#include "platform/uv/uv_control_client.h"

#include <algorithm>
#include <utility>

#include "platform/control_channel.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} << 10;
constexpr int kPartingMs = 3000;

Handle<uv_pipe_t> open_pipe(UvLoop& loop, void* data, Descriptor connection) {
  auto pipe = make_handle<uv_pipe_t>(
      data, [&](uv_pipe_t* handle) { return uv_pipe_init(loop.native(), handle, 0); });
  check(uv_pipe_open(pipe.get(), connection.get()));
  static_cast<void>(connection.release());  // the handle owns it
  return pipe;
}

}  // namespace

UvControlClient::UvControlClient(UvLoop& loop, Descriptor connection, std::uint64_t number,
                                 ControlClientEvents& events)
    : loop_(loop),
      number_(number),
      events_(&events),
      pipe_(open_pipe(loop, this, std::move(connection))),
      outbox_(loop, as_stream(pipe_), [this] { loop_.request_turn(); }) {
  check(uv_read_start(
      as_stream(pipe_),
      [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) noexcept {
        const auto room =
            static_cast<UvControlClient*>(handle->data)->loop_.read_buffer(kReadBytes);
        *buffer = uv_buf_init(room.data(), kReadBytes);
      },
      [](uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) noexcept {
        static_cast<UvControlClient*>(stream->data)->read_came(count, buffer);
      }));
  loop_.work_begun();
}

void UvControlClient::read_came(ssize_t count, const uv_buf_t* buffer) {
  if (count < 0) return end();
  incoming_.append(buffer->base, static_cast<std::size_t>(count));
  dispatch_lines();
  if (incoming_.size() > kMaxControlLine) end();
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
  if (events_ == nullptr) {
    gone_ = gone_ || left == UvOutbox::Left::all || left == UvOutbox::Left::failed;
  } else if (left == UvOutbox::Left::failed) {
    end_later();
  }
}

void UvControlClient::part() {
  events_ = nullptr;
  uv_read_stop(as_stream(pipe_));
  parting_limit_ = loop_.make_timer(kPartingMs, [this] {
    gone_ = true;
    loop_.request_turn();
  });
  parting_limit_->set_enabled(true);
}

}  // namespace velmora::uv
