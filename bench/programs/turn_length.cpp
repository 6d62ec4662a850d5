// turn_length: velmorad with a stop-watch around every turn of its loop: from when the system was
// last asked for events to when it is asked again, less the time slept in between. Takes velmorad's
// arguments; SIGTERM ends it, and one line of JSON tells how long the turns were. It adds one
// libuv handle and changes nothing else.
#include <uv.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <utility>
#include <vector>

#include "app/profile_paths.h"
#include "app/program_arguments.h"
#include "app/servent.h"
#include "platform/uv/uv_platform.h"

namespace {

// Turns by their length in microseconds; the last place holds all that are longer.
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

  void print() const {
    std::printf("{\"turns\": %llu, \"p50_ms\": %.3f, \"p99_ms\": %.3f, \"longest_ms\": %.3f}\n",
                static_cast<unsigned long long>(turns_), quantile(0.5), quantile(0.99),
                static_cast<double>(longest_) / 1e6);
    std::fflush(stdout);
  }

 private:
  void turned() {
    const std::uint64_t busy = uv_hrtime() - uv_metrics_idle_time(loop_);
    if (last_ != 0) {
      const std::uint64_t length = busy - last_;
      ++counts_[std::min<std::size_t>(length / 1000, counts_.size() - 1)];
      longest_ = std::max(longest_, length);
      ++turns_;
    }
    last_ = busy;
  }

  [[nodiscard]] double quantile(double share) const {
    std::uint64_t left = static_cast<std::uint64_t>(share * static_cast<double>(turns_));
    for (std::size_t us = 0; us < counts_.size(); ++us) {
      if (counts_[us] > left) return static_cast<double>(us) / 1000;
      left -= counts_[us];
    }
    return static_cast<double>(longest_) / 1e6;
  }

  uv_loop_t* loop_;
  uv_prepare_t prepare_{};
  std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(100'000);
  std::uint64_t turns_ = 0;
  std::uint64_t longest_ = 0;
  std::uint64_t last_ = 0;
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
  platform.loop().on_signal([&] { servent.request_exit(); });
  const TurnLengths lengths(platform.loop().native());
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
