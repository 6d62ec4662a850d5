#include "platform/uv/uv_loop.h"

#include <sys/prctl.h>
#include <uv.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <deque>
#include <utility>
#include <vector>

#include "platform/uv/uv_handle.h"
#include "platform/uv/uv_timer.h"
#include "platform/uv/uv_timers.h"

namespace velmora::uv {
namespace {

constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr unsigned long kTimerSlack_ns = 1000;

struct Posted {
  std::uint64_t turn;
  std::function<void()> continuation;
};

// First member of Parts: libuv's loop goes after every handle on it has been closed.
struct NativeLoop {
  NativeLoop() { check(uv_loop_init(&loop)); }
  ~NativeLoop() {
    while (uv_loop_close(&loop) == UV_EBUSY) uv_run(&loop, UV_RUN_DEFAULT);
  }
  NativeLoop(const NativeLoop&) = delete;
  NativeLoop& operator=(const NativeLoop&) = delete;

  uv_loop_t loop{};
};

}  // namespace

struct UvLoop::Parts {
  Parts();
  void before_poll();
  void after_poll();
  void run_posted();
  void end_turn() const;

  NativeLoop native;
  UvTimers timers{native.loop};
  Handle<uv_prepare_t> prepare;  // also keeps the loop alive while nothing else does
  Handle<uv_check_t> check_after;
  Handle<uv_idle_t> idle;  // active while the loop must not sleep
  std::vector<Handle<uv_signal_t>> signals;
  std::function<void()> on_signal;
  std::vector<TurnEnd*> turn_ends;
  std::uint64_t turn = 0;
  bool turn_requested = false;
  bool work_waits = false;  // something was begun since the system was last asked
  std::unique_ptr<char[]> buffer;
  std::size_t buffer_size = 0;
  UvSpareBuffers spare_buffers;
  std::deque<Posted> posted;
};

UvLoop::Parts::Parts() {
  uv_loop_t* loop = &native.loop;
  prepare =
      make_handle<uv_prepare_t>(this, [&](uv_prepare_t* h) { return uv_prepare_init(loop, h); });
  check_after =
      make_handle<uv_check_t>(this, [&](uv_check_t* h) { return uv_check_init(loop, h); });
  idle = make_handle<uv_idle_t>(this, [&](uv_idle_t* h) { return uv_idle_init(loop, h); });
  check(uv_prepare_start(prepare.get(), [](uv_prepare_t* h) noexcept {
    static_cast<Parts*>(h->data)->before_poll();
  }));
  check(uv_check_start(check_after.get(),
                       [](uv_check_t* h) noexcept { static_cast<Parts*>(h->data)->after_poll(); }));
}

void UvLoop::Parts::before_poll() {
  end_turn();
  ++turn;
  turn_requested = false;
  work_waits = false;
  timers.arm();
}

void UvLoop::Parts::after_poll() {
  run_posted();
  end_turn();
  if (posted.empty() && !turn_requested) uv_idle_stop(idle.get());
}

// Only what was posted before the system was last asked: events pending then have been handled.
void UvLoop::Parts::run_posted() {
  while (!posted.empty() && posted.front().turn < turn) {
    const std::function<void()> continuation = std::move(posted.front().continuation);
    posted.pop_front();
    continuation();
  }
}

void UvLoop::Parts::end_turn() const {
  for (TurnEnd* turn_end : turn_ends) turn_end->on_turn_end();
}

UvLoop::UvLoop() {
  std::signal(SIGPIPE, SIG_IGN);  // a vanished peer is an error of the write, not of the process
  // By default the system lets every wait end 0.05 ms late to save wake-ups, of which an interval
  // of 1 ms loses one tick in twenty.
  prctl(PR_SET_TIMERSLACK, kTimerSlack_ns, 0, 0, 0);
  tzset();
  parts_ = std::make_unique<Parts>();
}

// A dropped continuation may own the last of something that posts.
UvLoop::~UvLoop() {
  while (!parts_->posted.empty()) {
    const Posted dropped = std::move(parts_->posted.front());
    parts_->posted.pop_front();
  }
}

std::unique_ptr<Timer> UvLoop::make_timer(int interval_ms, std::function<void()> on_tick) {
  return std::make_unique<UvTimer>(*this, interval_ms, std::move(on_tick));
}

void UvLoop::post(std::function<void()> continuation) {
  parts_->posted.push_back({parts_->turn, std::move(continuation)});
  request_turn();
}

std::int64_t UvLoop::now_ms() const {
  return static_cast<std::int64_t>(uv_hrtime() / kNanosecondsPerMillisecond);
}

LocalTime UvLoop::local_time() const {
  const std::time_t now = std::time(nullptr);
  std::tm civil{};
  localtime_r(&now, &civil);
  return {civil.tm_year + 1900, civil.tm_mon + 1, civil.tm_mday,
          civil.tm_hour,        civil.tm_min,     civil.tm_sec};
}

void UvLoop::run() { uv_run(native(), UV_RUN_DEFAULT); }

void UvLoop::stop() { uv_stop(native()); }

bool UvLoop::run_until(const std::function<bool()>& done, int most_ms) {
  bool too_late = false;
  const auto deadline = make_timer(std::max(most_ms, 1), [&] { too_late = true; });
  deadline->set_enabled(true);
  while (!done()) {
    if (too_late) return false;
    uv_run(native(), UV_RUN_ONCE);
  }
  return true;
}

void UvLoop::on_signal(std::function<void()> callback) {
  parts_->on_signal = std::move(callback);
  if (!parts_->signals.empty()) return;
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    auto handle = make_handle<uv_signal_t>(
        parts_.get(), [&](uv_signal_t* h) { return uv_signal_init(native(), h); });
    const auto deliver = [](uv_signal_t* h, int) noexcept {
      const auto called = static_cast<Parts*>(h->data)->on_signal;  // it may set another one
      called();
    };
    check(uv_signal_start(handle.get(), deliver, number));
    work_begun();
    parts_->signals.push_back(std::move(handle));
  }
}

int UvLoop::backend_descriptor() const { return uv_backend_fd(&parts_->native.loop); }

int UvLoop::backend_timeout() const {
  if (parts_->work_waits) return 0;
  parts_->timers.arm();
  uv_update_time(&parts_->native.loop);  // it counts from when the loop last looked at the clock
  return uv_backend_timeout(&parts_->native.loop);
}

void UvLoop::turn_once() { uv_run(native(), UV_RUN_NOWAIT); }

uv_loop_s* UvLoop::native() { return &parts_->native.loop; }

void UvLoop::add_turn_end(TurnEnd& turn_end) { parts_->turn_ends.push_back(&turn_end); }

void UvLoop::remove_turn_end(TurnEnd& turn_end) { std::erase(parts_->turn_ends, &turn_end); }

std::uint64_t UvLoop::turn() const { return parts_->turn; }

void UvLoop::request_turn() {
  parts_->turn_requested = true;
  uv_idle_start(parts_->idle.get(), [](uv_idle_t*) noexcept {});
}

void UvLoop::work_begun() { parts_->work_waits = true; }

UvTimers& UvLoop::timers() { return parts_->timers; }

UvSpareBuffers& UvLoop::spare_buffers() { return parts_->spare_buffers; }

std::span<char> UvLoop::read_buffer(std::size_t least) {
  if (parts_->buffer_size < least) {
    parts_->buffer = std::make_unique_for_overwrite<char[]>(least);
    parts_->buffer_size = least;
  }
  return {parts_->buffer.get(), parts_->buffer_size};
}

}  // namespace velmora::uv
