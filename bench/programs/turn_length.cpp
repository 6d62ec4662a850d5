// turn_length: velmorad with a stop-watch around every turn of its loop: from when the system was
// last asked for events to when it is asked again, less the time slept in between. It also tells
// how much processor time the turns took, which does not count what other programs took meanwhile.
// Takes velmorad's arguments; SIGTERM ends it, and one line of JSON tells how long the turns were,
// but for those in which it then saves and leaves. It adds one libuv handle and changes nothing
// else.
#include <uv.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <utility>
#include <vector>

#include "app/profile_paths.h"
#include "app/program_arguments.h"
#include "app/servent.h"
#include "platform/uv/uv_platform.h"

namespace {

std::uint64_t processor_ns() {
  timespec used{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<std::uint64_t>(used.tv_sec) * 1'000'000'000U +
         static_cast<std::uint64_t>(used.tv_nsec);
}

// Lengths by their microseconds; the last place holds all that are longer.
class Lengths {
 public:
  void add(std::uint64_t ns) {
    ++counts_[std::min<std::size_t>(ns / 1000, counts_.size() - 1)];
    longest_ns_ = std::max(longest_ns_, ns);
    ++number_;
  }
  [[nodiscard]] std::uint64_t number() const { return number_; }
  [[nodiscard]] double longest_ms() const { return static_cast<double>(longest_ns_) / 1e6; }
  [[nodiscard]] double quantile_ms(double share) const {
    std::uint64_t left = static_cast<std::uint64_t>(share * static_cast<double>(number_));
    for (std::size_t us = 0; us < counts_.size(); ++us) {
      if (counts_[us] > left) return static_cast<double>(us) / 1000;
      left -= counts_[us];
    }
    return longest_ms();
  }

 private:
  std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(100'000);
  std::uint64_t number_ = 0;
  std::uint64_t longest_ns_ = 0;
};

class TurnLengths {
 public:
  explicit TurnLengths(uv_loop_t* loop) : loop_(loop) {
    uv_loop_configure(loop, UV_METRICS_IDLE_TIME);
    uv_prepare_init(loop, &prepare_);
    prepare_.data = this;
    uv_prepare_start(
        &prepare_, [](uv_prepare_t* handle) { static_cast<TurnLengths*>(handle->data)->turned(); });
  }
  ~TurnLengths() {
    uv_close(reinterpret_cast<uv_handle_t*>(&prepare_), nullptr);
    uv_run(loop_, UV_RUN_NOWAIT);
  }
  TurnLengths(const TurnLengths&) = delete;
  TurnLengths& operator=(const TurnLengths&) = delete;

  void stop() { uv_prepare_stop(&prepare_); }

  void print() const {
    std::printf(
        "{\"turns\": %llu, \"p50_ms\": %.3f, \"p99_ms\": %.3f, \"longest_ms\": %.3f, "
        "\"processor_p50_ms\": %.3f, \"processor_p99_ms\": %.3f, "
        "\"processor_longest_ms\": %.3f}\n",
        static_cast<unsigned long long>(wall_.number()), wall_.quantile_ms(0.5),
        wall_.quantile_ms(0.99), wall_.longest_ms(), processor_.quantile_ms(0.5),
        processor_.quantile_ms(0.99), processor_.longest_ms());
    std::fflush(stdout);
  }

 private:
  void turned() {
    const std::uint64_t busy = uv_hrtime() - uv_metrics_idle_time(loop_);
    const std::uint64_t used = processor_ns();
    if (last_busy_ != 0) {
      wall_.add(busy - last_busy_);
      processor_.add(used - last_used_);
    }
    last_busy_ = busy;
    last_used_ = used;
  }

  uv_loop_t* loop_;
  uv_prepare_t prepare_{};
  Lengths wall_;
  Lengths processor_;
  std::uint64_t last_busy_ = 0;
  std::uint64_t last_used_ = 0;
};

void run(const velmora::ProgramArguments& arguments) {
  const velmora::ProfilePaths paths = velmora::profile_paths(arguments.profile);
  velmora::uv::UvPlatform::make_folder(paths.profile);
  velmora::uv::UvPlatform platform(paths.profile, arguments.listen);
  velmora::ServentOptions options;
  options.settings_path = paths.settings;
  options.set = arguments.set;
  velmora::Servent servent(platform.platform(), std::move(options));
  if (servent.start() == velmora::Servent::Started::already_running) {
    throw std::runtime_error("a servent runs on that profile already");
  }
  servent.on_ended = [&] { platform.loop().stop(); };
  TurnLengths lengths(platform.loop().native());
  platform.loop().on_signal([&] {
    lengths.stop();
    servent.request_exit();
  });
  std::printf("turn_length runs\n");
  std::fflush(stdout);
  platform.loop().run();
  lengths.print();
}

}  // namespace

int main(int argc, char** argv) {
  velmora::ProgramArguments arguments;
  const velmora::ProgramText text{"turn_length", "1", "velmorad with a stop-watch"};
  if (const auto status = velmora::read_program_arguments(argc, argv, text, arguments)) {
    return *status;
  }
  try {
    run(arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "turn_length: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
