#include "media/exact_mpeg.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr int kMostTags = 8;
constexpr std::size_t kTagHeader = 10;
constexpr std::size_t kSearched = 16'384;  // bytes behind the tags
constexpr std::size_t kFrameHeader = 4;
constexpr std::size_t kLargestFrame = 2881;  // MPEG-2.5 Layer II, 160 kbit/s at 8000 Hz, padded

// As they stand in the header.
constexpr unsigned kMpeg1 = 3;
constexpr unsigned kReservedVersion = 1;
constexpr unsigned kLayerI = 3;
constexpr unsigned kLayerIII = 1;

unsigned byte_of(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

struct Frame {
  unsigned version = 0;
  unsigned layer = 0;
  int frequency = 0;       // Hz
  int bitrate = 0;         // bit/s
  std::size_t length = 0;  // bytes, header included

  [[nodiscard]] bool akin(const Frame& other) const {
    return version == other.version && layer == other.layer && frequency == other.frequency;
  }
};

int frequency_of(unsigned version, unsigned index) {
  constexpr std::array<int, 3> kOfMpeg1 = {44100, 48000, 32000};
  constexpr std::array<int, 4> kDivisors = {4, 1, 2, 1};  // by version
  return kOfMpeg1.at(index) / kDivisors.at(version);
}

int length_of(const Frame& frame, int padding) {
  if (frame.layer == kLayerI) return (12 * frame.bitrate / frame.frequency + padding) * 4;
  const int factor = frame.layer == kLayerIII && frame.version != kMpeg1 ? 72 : 144;
  return factor * frame.bitrate / frame.frequency + padding;
}

std::optional<Frame> frame_at(std::string_view bytes) {
  if (bytes.size() < kFrameHeader) return {};
  const unsigned second = byte_of(bytes, 1);
  const unsigned third = byte_of(bytes, 2);
  if (byte_of(bytes, 0) != 0xFF || (second & 0xE0U) != 0xE0) return {};
  Frame frame;
  frame.version = second >> 3U & 3U;
  frame.layer = second >> 1U & 3U;
  const unsigned frequency_index = third >> 2U & 3U;
  if (frame.version == kReservedVersion || frame.layer == 0 || frequency_index == 3) return {};
  frame.frequency = frequency_of(frame.version, frequency_index);
  frame.bitrate = mpeg_bitrate(frame.version & 1U, frame.layer, third >> 4U);
  if (frame.bitrate == 0) return {};
  frame.length = static_cast<std::size_t>(length_of(frame, static_cast<int>(third >> 1U & 1U)));
  return frame;
}

// Where the bytes behind the tags at the start begin.
std::uint64_t behind_tags(File& file) {
  std::uint64_t at = 0;
  for (int tags = 0; tags < kMostTags; ++tags) {
    const std::string tag = file.read(at, kTagHeader);
    if (tag.size() < kTagHeader || !tag.starts_with("ID3")) break;
    std::uint64_t size = 0;
    bool good = byte_of(tag, 3) != 0xFF && byte_of(tag, 4) != 0xFF;
    for (std::size_t i = 6; i < kTagHeader; ++i) {
      good = good && byte_of(tag, i) < 0x80;  // seven bits of the size each
      size = size << 7U | byte_of(tag, i);
    }
    if (!good) break;
    const bool footer = (byte_of(tag, 5) & 0x10U) != 0;
    at += size + kTagHeader * (footer ? 2 : 1);
  }
  return at;
}

// What stands behind the last frame of a file.
bool ends_audio(std::string_view rest, bool to_end_of_file) {
  return (rest.empty() && to_end_of_file) || rest.starts_with("TAG") ||
         rest.starts_with("APETAGEX");
}

// The first frame in the bytes whose length leads to another of its kind or the audio's end.
std::optional<Frame> confirmed_frame(std::string_view bytes, bool to_end_of_file) {
  for (std::size_t at = 0; at < std::min(bytes.size(), kSearched); ++at) {
    const std::optional<Frame> frame = frame_at(bytes.substr(at));
    if (!frame || at + frame->length > bytes.size()) continue;
    const std::string_view rest = bytes.substr(at + frame->length);
    const std::optional<Frame> next = frame_at(rest);
    if (next ? next->akin(*frame) : ends_audio(rest, to_end_of_file)) return frame;
  }
  return {};
}

}  // namespace

void Get_exact_mp3_info(File& file, Mp3Info& info, DebugLog& log) {
  trap(log, "Get_mp3_info: ", [&] {
    const std::uint64_t start = behind_tags(file);
    const std::string bytes = file.read(start, kSearched + kLargestFrame + kFrameHeader);
    const auto frame = confirmed_frame(bytes, start + bytes.size() >= file.size());
    if (!frame) throw PlatformError(Errc::invalid_call);
    info = {.frequency = decimal_text(frame->frequency), .bitrate = decimal_text(frame->bitrate)};
  });
}

}  // namespace velmora
