#include "cli/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr std::size_t kBar = 16;
constexpr std::size_t kBarAndTexts = 54;  // the widest of what stands beside a name
constexpr std::string_view kDigits = "0123456789";

// The number before the first per cent sign; a comma or a point may stand before its decimals.
std::optional<double> percentage(std::string_view text) {
  const std::size_t sign = text.find('%');
  if (sign == std::string_view::npos) return std::nullopt;
  const std::size_t last = text.substr(0, sign).find_last_not_of(' ');
  if (last == std::string_view::npos) return std::nullopt;
  const std::size_t before = text.substr(0, last + 1).find_last_not_of("0123456789.,");
  const std::size_t first = before == std::string_view::npos ? 0 : before + 1;
  std::string digits(text.substr(first, last + 1 - first));
  std::replace(digits.begin(), digits.end(), ',', '.');
  double value = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
    return std::nullopt;
  }
  return std::clamp(value, 0.0, 100.0);
}

}  // namespace

std::uint64_t read_count(std::string_view text) {
  std::uint64_t value = 0;
  const std::size_t first = text.find_first_of(kDigits);
  if (first == std::string_view::npos) return 0;
  for (const char c : text.substr(first)) {
    if (c == ',') continue;
    if (c < '0' || c > '9' || value > UINT64_MAX / 10 - 1) break;
    value = value * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return value;
}

DownloadStatus read_download_status(std::string_view status, std::uint64_t size) {
  if (status == "Done") return {Phase::done, std::nullopt};
  if (status.starts_with("Downloading")) {
    std::optional<double> percent = percentage(status);
    const std::uint64_t bytes = read_count(status);
    if (!percent && size > 0 && bytes > 0 && bytes <= size) {
      percent = 100.0 * static_cast<double>(bytes) / static_cast<double>(size);
    }
    return {Phase::running, percent};
  }
  for (const std::string_view waiting :
       {"Queued", "Waiting", "Requesting", "Asked", "Connected", "Connecting"}) {
    if (status.starts_with(waiting)) return {Phase::waiting, std::nullopt};
  }
  return {Phase::ended, std::nullopt};
}

bool ToldStatus::is_news(std::string_view status, std::uint64_t size) {
  std::string words(status);
  std::erase_if(words, [](char c) { return (c >= '0' && c <= '9') || c == ',' || c == '.'; });
  const int tenth = static_cast<int>(read_download_status(status, size).percent.value_or(0) / 10);
  if (words == words_ && tenth <= tenth_) return false;
  words_ = std::move(words);
  tenth_ = tenth;
  return true;
}

std::string shown_count(std::uint64_t n) {
  std::string text = std::to_string(n);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string progress_line(std::string_view name, std::string_view status, std::uint64_t size,
                          double rate, std::size_t width) {
  const DownloadStatus read = read_download_status(status, size);
  std::string right = visible(status);
  const std::optional<double> percent = read.phase == Phase::done ? 100.0 : read.percent;
  if (percent) {
    const auto filled = static_cast<std::size_t>(*percent * kBar / 100);
    right = fmt::format("[{}{}] {:3.0f} %", std::string(filled, '#'),
                        std::string(kBar - filled, '-'), std::floor(*percent));
    if (read.phase == Phase::done) {
      right += "  Done";
    } else if (rate > 0) {
      const double left = static_cast<double>(size) * (100 - *percent) / 100;
      right += fmt::format("  {}/s  {} left", shown_size(rate), shown_time(left / rate));
    }
  }
  right = cut_to(right, width);
  const std::size_t space = width - columns(right);
  if (space < 4) return right;
  // one width for all names, so that the bars stand below each other
  const std::size_t wanted = width > kBarAndTexts ? width - kBarAndTexts : 0;
  const std::size_t name_width =
      std::min<std::size_t>(space - 2, std::clamp<std::size_t>(wanted, 16, 40));
  return padded(cut_to(visible(name), name_width), name_width) + "  " + right;
}

}  // namespace velmora::cli
