#include "platform/uv/uv_outbox.h"

#include <limits>
#include <memory>
#include <utility>

#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

// What follows a string that leaves alone waits so long, so that the peer can have read the string:
// a turn of our loop says nothing about the peer's.
constexpr int kHoldMs = 20;

// libuv takes lengths of 32 bits and never changes what it sends.
uv_buf_t buffer_over(const char* data, std::size_t size) {
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  return uv_buf_init(const_cast<char*>(data),
                     static_cast<unsigned int>(size < kMost ? size : kMost));
}

}  // namespace

// Owns itself and the bytes until libuv is done with them, which may be after the outbox.
struct UvOutbox::Request {
  uv_write_t write{};
  UvOutbox* outbox = nullptr;
  Segment segment;
};

UvOutbox::UvOutbox(UvLoop& loop, uv_stream_t* stream, std::function<void()> on_taken)
    : stream_(stream), loop_(loop), spares_(loop.spare_buffers()), on_taken_(std::move(on_taken)) {}

UvOutbox::~UvOutbox() {
  if (in_flight_ != nullptr) in_flight_->outbox = nullptr;
}

void UvOutbox::push(std::string_view data, bool alone) {
  if (data.empty() || failed_) return;
  if (alone) {
    gather();
    segments_.push_back({std::string(data), true});
  } else {
    if (gathered_.empty()) gathered_ = spares_.take();
    gathered_ += data;
  }
  bytes_ += data.size();
}

// What is gathered becomes a segment.
void UvOutbox::gather() {
  if (gathered_.empty()) return;
  segments_.push_back({std::string(), false});
  segments_.back().bytes.swap(gathered_);
}

UvOutbox::Left UvOutbox::flush() {
  while (!failed_) {
    if (in_flight_ != nullptr) return Left::waits;
    if (bytes_ == 0) return Left::all;
    if (hold_) return Left::held;
    if (!segments_.empty() && segments_.front().alone && last_left_in_ == loop_.turn()) {
      loop_.request_turn();
      return Left::held;
    }
    Segment segment = take_first();
    const uv_buf_t buffer = buffer_over(segment.bytes.data(), segment.bytes.size());
    const int result = uv_try_write(stream_, &buffer, 1);
    if (result < 0 && result != UV_EAGAIN) return fail();
    const std::size_t sent = result < 0 ? 0 : static_cast<std::size_t>(result);
    if (sent == segment.bytes.size()) {
      spares_.give(std::move(segment.bytes));
      left(segment.alone);
    } else if (!send_waiting(std::move(segment), sent)) {
      return fail();
    }
  }
  return Left::failed;
}

// An idle connection keeps no memory for what it sent.
UvOutbox::Segment UvOutbox::take_first() {
  Segment first{std::string(), false};
  if (segments_.empty()) {
    first.bytes.swap(gathered_);
  } else {
    first = std::move(segments_.front());
    segments_.erase(segments_.begin());
    if (segments_.empty()) segments_.shrink_to_fit();
  }
  bytes_ -= first.bytes.size();
  return first;
}

bool UvOutbox::send_waiting(Segment segment, std::size_t sent) {
  auto request = std::make_unique<Request>();
  request->outbox = this;
  request->segment = std::move(segment);
  request->write.data = request.get();
  const std::string& bytes = request->segment.bytes;
  const uv_buf_t buffer = buffer_over(bytes.data() + sent, bytes.size() - sent);
  const int result =
      uv_write(&request->write, stream_, &buffer, 1, [](uv_write_t* write, int status) noexcept {
        const std::unique_ptr<Request> done(static_cast<Request*>(write->data));
        if (done->outbox != nullptr) {
          done->outbox->spares_.give(std::move(done->segment.bytes));
          done->outbox->taken(status, done->segment.alone);
        }
      });
  if (result < 0) return false;
  loop_.work_begun();
  in_flight_ = request.release();
  return true;
}

void UvOutbox::left(bool alone) {
  last_left_in_ = loop_.turn();
  if (!alone) return;
  hold_ = loop_.make_timer(kHoldMs, [this] {
    hold_.reset();
    on_taken_();
  });
  hold_->set_enabled(true);
}

UvOutbox::Left UvOutbox::fail() {
  failed_ = true;
  segments_.clear();
  gathered_.clear();
  bytes_ = 0;
  return Left::failed;
}

void UvOutbox::taken(int status, bool alone) {
  in_flight_ = nullptr;
  if (status < 0) {
    fail();
  } else {
    left(alone);
  }
  on_taken_();
}

}  // namespace velmora::uv
