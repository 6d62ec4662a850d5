// What the status of a download tells: how far it is, how fast it goes, how long it still takes.
// The servent shows a status as a text for people, so it is read leniently. Times are seconds on
// any steady clock, sizes are bytes. No I/O.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace velmora::cli {

enum class Phase {
  waiting,  // queued or connecting
  running,
  done,
  ended,  // any other text: it says why
};

struct DownloadStatus {
  Phase phase = Phase::waiting;
  std::optional<double> percent;  // 0 to 100, while running
};

// `size` helps when the text gives a count of bytes and no percentage.
DownloadStatus read_download_status(std::string_view status, std::uint64_t size);

// The number in a text such as "1,234,567", the separators skipped; none: 0.
std::uint64_t read_count(std::string_view text);

// The rate over the last changes. A whole percentage of a large file changes seldom, so only
// changes count; a count that has not changed for long lets the rate fall.
class RateMeter {
 public:
  void add(double now, double bytes);
  [[nodiscard]] double rate(double now) const;  // bytes a second; 0 while nothing is known

 private:
  struct Sample {
    double time;
    double bytes;
  };
  std::deque<Sample> samples_;
};

std::string shown_size(double bytes);      // "1.2 MiB"
std::string shown_time(double seconds);    // "0:34", "1:02:03"
std::string shown_count(std::uint64_t n);  // "1,234,567"

// "song.mp3  [#####-----]  45 %  1.2 MiB/s  0:34 left", or the status where there is no progress;
// at most `width` columns, already visible text.
std::string progress_line(std::string_view name, std::string_view status, std::uint64_t size,
                          double rate, std::size_t width);

}  // namespace velmora::cli
