#include "platform/uv/uv_watch.h"

#include <utility>

#include "platform/uv/uv_loop.h"

namespace velmora::uv {

UvWatch::UvWatch(UvLoop& loop, Descriptor descriptor)
    : loop_(loop),
      descriptor_(std::move(descriptor)),
      poll_(make_handle<uv_poll_t>(this, [&](uv_poll_t* handle) {
        return uv_poll_init(loop.native(), handle, descriptor_.get());
      })) {}

// A pause is made known to the system only when something comes in it: most end before.
void UvWatch::set_reading(bool reading) {
  reading_ = reading;
  if (reading) update();
}

void UvWatch::set_writing(bool writing) {
  writing_ = writing;
  update();
}

void UvWatch::update() {
  const int wanted = (reading_ ? UV_READABLE : 0) | (writing_ ? UV_WRITABLE : 0);
  if (wanted == watched_) return;
  watched_ = wanted;
  if (wanted == 0) {
    uv_poll_stop(poll_.get());
    return;
  }
  uv_poll_start(poll_.get(), wanted, [](uv_poll_t* handle, int status, int events) noexcept {
    auto* watch = static_cast<UvWatch*>(handle->data);
    if (status < 0) {  // libuv watches no longer
      events = std::exchange(watch->watched_, 0);
    }
    watch->came(events);
    if (handle->data != nullptr) watch->update();  // else it is gone; the handle outlives it
  });
  loop_.work_begun();
}

void UvWatch::came(int events) {
  const uv_poll_t* handle = poll_.get();
  if ((events & UV_WRITABLE) != 0 && writing_) events_->on_writable();
  if (handle->data != nullptr && (events & UV_READABLE) != 0 && reading_) events_->on_readable();
}

}  // namespace velmora::uv
