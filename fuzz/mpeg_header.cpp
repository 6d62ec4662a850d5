// The audio header of a shared file: decimal texts or nothing.
#include "media/mpeg_header.h"

#include "fuzzed_parts.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  const std::string_view start(reinterpret_cast<const char*>(data), std::min(size, kMpegBytesRead));
  CountingLog log;
  Mp3Info info;
  Get_mp3_info(start, info, log);
  for (const std::string& text : {info.frequency, info.bitrate}) {
    require(text.find_first_not_of("0123456789") == std::string::npos, "a number is decimal");
    require(text.size() <= 6, "and none is larger than there is");
  }
  require(log.lines > 0 || !info.bitrate.empty(), "without an error both are set");
  return 0;
}
