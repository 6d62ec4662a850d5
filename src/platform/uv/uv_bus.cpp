#include "platform/uv/uv_bus.h"

#include <poll.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <utility>

namespace velmora::uv {
namespace {

constexpr std::uint64_t kMicroseconds = 1'000'000;

std::uint64_t monotonic_us() {
  std::timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * kMicroseconds +
         static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

}  // namespace

UvBus::UvBus(UvLoop& loop, std::function<void()> on_lost)
    : loop_(loop), on_lost_(std::move(on_lost)), timeout_(loop.make_timer(1, [this] { pump(); })) {}

UvBus::~UvBus() = default;

void UvBus::open() {
  if (bus_) return;
  if (!library_) library_ = std::make_unique<BusLibrary>();
  sd_bus* bus = nullptr;
  check(library_->open_system(&bus));
  bus_ = std::unique_ptr<sd_bus, Close>(bus, Close{library_.get()});
  try {
    poll_ = make_handle<uv_poll_t>(this, [&](uv_poll_t* handle) {
      return uv_poll_init(loop_.native(), handle, library_->get_fd(bus));
    });
  } catch (...) {
    bus_.reset();
    throw;
  }
}

void UvBus::pump() {
  if (!bus_ || std::exchange(pumping_, true)) return;
  int result = 0;
  do {
    result = library_->process(bus_.get(), nullptr);
  } while (result > 0);
  pumping_ = false;
  if (result < 0) return lose();
  wait_for_more();
}

void UvBus::wait_for_more() {
  const int wanted = library_->get_events(bus_.get());
  if (wanted < 0) return lose();
  const int events =
      ((wanted & POLLIN) != 0 ? UV_READABLE : 0) | ((wanted & POLLOUT) != 0 ? UV_WRITABLE : 0);
  uv_poll_start(poll_.get(), events, [](uv_poll_t* handle, int, int) noexcept {
    static_cast<UvBus*>(handle->data)->pump();
  });
  loop_.work_begun();

  std::uint64_t due_us = 0;
  timeout_->set_enabled(false);
  constexpr auto kNever = std::numeric_limits<std::uint64_t>::max();
  if (library_->get_timeout(bus_.get(), &due_us) < 0 || due_us == kNever) return;
  const std::uint64_t now_us = monotonic_us();
  const std::uint64_t wait_ms = due_us > now_us ? (due_us - now_us) / 1000 + 1 : 1;
  timeout_->set_interval(static_cast<int>(std::min<std::uint64_t>(wait_ms, 60'000)));
  timeout_->set_enabled(true);
}

void UvBus::lose() {
  timeout_->set_enabled(false);
  poll_.reset();
  bus_.reset();
  on_lost_();
}

}  // namespace velmora::uv
