// Sampling frequency and bit rate of an MPEG audio file, read exactly: all sampling rates of
// MPEG-1, MPEG-2 and MPEG-2.5, behind any ID3v2 tags, from the first frame that is followed by
// another of its kind or by the end of the audio. A free-format frame, which tells no bit rate, is
// none. Of a file with a variable bit rate it is the first frame's. It opens no file and reads at
// most 8 tag headers and 20 KB.
#pragma once

#include "media/mpeg_header.h"
#include "platform/files.h"

namespace velmora {

// Traps its errors with "Get_mp3_info: " (no such frame is one) and then sets nothing.
void Get_exact_mp3_info(File& file, Mp3Info& info, DebugLog& log);

}  // namespace velmora
