#include "media/mpeg_header.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

// kbit/s by bitrate index 1 to 14: MPEG-1 Layer I, II, III, then MPEG-2 Layer I, II, III.
constexpr std::array<std::string_view, 14> kBitrateRows = {
    "032,032,032,032,008,008,", "064,048,040,048,016,016,", "096,056,048,056,024,024,",
    "128,064,056,064,032,032,", "160,080,064,080,040,040,", "192,096,080,096,048,048,",
    "224,112,096,112,056,056,", "256,128,112,128,064,064,", "288,160,128,144,080,080,",
    "320,192,160,160,096,096,", "352,224,192,176,112,112,", "384,256,224,192,128,128,",
    "416,320,256,224,144,144,", "448,384,320,256,160,160,",
};
constexpr std::size_t kFieldWidth = 4;  // three digits and the comma
// Version bit x 4 with the layer bits, for each field of a row.
constexpr std::array<std::size_t, 6> kColumnKeys = {7, 6, 5, 3, 2, 1};
constexpr std::size_t kColumns = 8;
constexpr std::size_t kBitrateIndexes = 16;

// Addressed by column key + bitrate index x 8; what no text field gives is 0.
using BitrateTable = std::array<std::int16_t, kColumns * kBitrateIndexes>;

constexpr BitrateTable build_bitrate_table() {
  BitrateTable table{};
  for (std::size_t row = 0; row < kBitrateRows.size(); ++row) {
    for (std::size_t field = 0; field < kColumnKeys.size(); ++field) {
      int kbits = 0;
      for (const char digit : kBitrateRows[row].substr(field * kFieldWidth, kFieldWidth - 1)) {
        kbits = kbits * 10 + (digit - '0');
      }
      table[kColumnKeys[field] + (row + 1) * kColumns] = static_cast<std::int16_t>(kbits);
    }
  }
  return table;
}

constexpr BitrateTable bitrate_table = build_bitrate_table();

unsigned byte_at(std::string_view bytes, std::size_t index) {
  if (index >= bytes.size()) throw PlatformError(Errc::invalid_call);
  return static_cast<unsigned char>(bytes[index]);
}

// The two bytes of a frame header that tell anything; bits 8 and up are 0.
struct HeaderBytes {
  unsigned first = 0;
  unsigned second = 0;
};

// Three bytes shifted left by 4 bits, the first 4 of them dropped.
HeaderBytes repack_header(std::string_view bytes) {
  const unsigned middle = byte_at(bytes, 1);
  return {(byte_at(bytes, 0) & 15U) << 4U | middle >> 4U,
          (middle & 15U) << 4U | byte_at(bytes, 2) >> 4U};
}

bool is_sync(unsigned first, unsigned second) { return first == 255 && (second & 240U) == 240; }

// Raises "Invalid procedure call or argument" if there is no frame header.
HeaderBytes find_header(std::string_view start) {
  for (std::size_t at = 0; at + 1 < start.size(); ++at) {
    if (is_sync(byte_at(start, at), byte_at(start, at + 1))) {
      return repack_header(start.substr(at + 1));
    }
    if (at + 2 >= start.size()) break;
    const HeaderBytes shifted = repack_header(start.substr(at));
    if (is_sync(shifted.first, shifted.second)) {
      // Kept: behind a sync that begins within a byte the fields are read from unshifted bytes.
      return {byte_at(start, at + 2), byte_at(start, at + 3)};
    }
  }
  throw PlatformError(Errc::invalid_call);
}

int frequency_of(unsigned key) {
  switch (key) {
    case 0:
      return 22050;
    case 1:
      return 24000;
    case 2:
      return 16000;
    case 4:
      return 44100;
    case 5:
      return 48000;
    case 6:
      return 32000;
    default:
      return 0;
  }
}

}  // namespace

int mpeg_bitrate(unsigned version_bit, unsigned layer_bits, unsigned bitrate_index) {
  return bitrate_table.at((version_bit * 4 | layer_bits) + bitrate_index * kColumns) * 1000;
}

void Get_mp3_info(std::string_view start, Mp3Info& info, DebugLog& log) {
  trap(log, "Get_mp3_info: ", [&] {
    const HeaderBytes header = find_header(start.substr(0, kMpegBytesRead));
    const unsigned version_key = (header.first & 128U) / 128 * 4;
    const unsigned layer_bits = (header.first & 96U) / 32;
    const unsigned bitrate_index = header.first & 15U;
    // Kept: not shifted down, so that only frequency index 0 is ever found in the table.
    const unsigned frequency_bits = header.second & 192U;
    info.bitrate = decimal_text(mpeg_bitrate(version_key / 4, layer_bits, bitrate_index));
    info.frequency = decimal_text(frequency_of(version_key | frequency_bits));
  });
}

}  // namespace velmora
