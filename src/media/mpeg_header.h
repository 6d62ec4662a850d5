// Sampling frequency and bit rate of an MPEG audio file, from the first frame header in its first
// 4096 bytes. Bytes in, facts out: it opens no file.
#pragma once

#include <string>
#include <string_view>

#include "platform/debug_log.h"

namespace velmora {

inline constexpr std::size_t kMpegBytesRead = 4096;

// Bit/s by what a frame header says: version bit 1 for MPEG-1, 0 for those behind it; layer bits 1,
// 2, 3 for Layer III, II, I; bit-rate index 0 to 15. 0 where there is no such rate.
int mpeg_bitrate(unsigned version_bit, unsigned layer_bits, unsigned bitrate_index);

// Plain decimal texts: Hz and bit/s.
struct Mp3Info {
  std::string frequency;
  std::string bitrate;
};

// `start` holds the first kMpegBytesRead bytes of the file, fewer if it is shorter. Traps its
// errors with "Get_mp3_info: "; what was not set by then keeps the value it had in `info`.
void Get_mp3_info(std::string_view start, Mp3Info& info, DebugLog& log);

}  // namespace velmora
