// What the status of a download tells, and the line that shows it with its rate and time left. The
// servent shows a status as a text for people, so it is read leniently. Sizes are bytes. No I/O.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/progress.h"

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

// What is worth a line of a status that is looked at again and again: other words, or one more
// tenth of the file.
class ToldStatus {
 public:
  bool is_news(std::string_view status, std::uint64_t size);

 private:
  std::string words_;
  int tenth_ = 0;
};

// The number in a text such as "1,234,567", the separators skipped; none: 0.
std::uint64_t read_count(std::string_view text);

std::string shown_count(std::uint64_t n);  // "1,234,567"

// "song.mp3  [#####-----]  45 %  1.2 MiB/s  0:34 left", or the status where there is no progress;
// at most `width` columns, already visible text.
std::string progress_line(std::string_view name, std::string_view status, std::uint64_t size,
                          double rate, std::size_t width);

}  // namespace velmora::cli
