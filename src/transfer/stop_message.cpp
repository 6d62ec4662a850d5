#include "transfer/stop_message.h"

#include <algorithm>
#include <charconv>

namespace velmora {
namespace {

constexpr std::string_view kMark = "VelMora-Stop: ";
constexpr std::size_t kMostDigits = 4;
// How far before its end a block's message may begin: others may send longer texts than this one.
constexpr std::size_t kFarthest = std::size_t{16} << 10;
constexpr std::size_t kLongest = kMark.size() + kMostDigits + 2 + kMaxStopText;

// Where the last bytes of a block begin; what lies before them, nearly all of a file, is never
// looked at.
std::size_t tail_of(std::string_view block, std::size_t bytes) {
  return block.size() - std::min(block.size(), bytes);
}

// The text, if what follows the mark is a count, CR LF and exactly that many bytes.
std::optional<std::string_view> text_after_mark(std::string_view rest) {
  std::size_t count = 0;
  const auto [digits_end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), count);
  if (error != std::errc()) return std::nullopt;
  rest.remove_prefix(static_cast<std::size_t>(digits_end - rest.data()));
  if (!rest.starts_with("\r\n")) return std::nullopt;
  rest.remove_prefix(2);
  if (rest.size() != count) return std::nullopt;
  return rest;
}

// Whether this is the beginning of a message and not all of it.
bool is_begun(std::string_view bytes) {
  if (bytes.size() > kLongest) return false;
  if (bytes.size() < kMark.size()) return kMark.starts_with(bytes);
  const std::string_view rest = bytes.substr(kMark.size());
  std::size_t count = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), count);
  if (error != std::errc()) return rest.empty();
  const std::string_view behind = rest.substr(static_cast<std::size_t>(end - rest.data()));
  if (count > kMaxStopText) return false;
  if (behind.size() < 2) return std::string_view("\r\n").starts_with(behind);
  return behind.starts_with("\r\n") && behind.size() - 2 < count;
}

}  // namespace

// A text may hold the mark itself, so the first place that fits is the message.
std::optional<StopMessage> find_stop_message(std::string_view block) {
  for (std::size_t at = block.find(kMark, tail_of(block, kFarthest)); at != std::string_view::npos;
       at = block.find(kMark, at + 1)) {
    if (const auto text = text_after_mark(block.substr(at + kMark.size()))) {
      return StopMessage{at, *text};
    }
  }
  return std::nullopt;
}

std::size_t begun_stop_message(std::string_view block) {
  for (std::size_t at = block.find(kMark.front(), tail_of(block, kLongest));
       at != std::string_view::npos; at = block.find(kMark.front(), at + 1)) {
    if (is_begun(block.substr(at))) return at;
  }
  return block.size();
}

}  // namespace velmora
