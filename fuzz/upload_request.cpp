// The text of an upload request taken apart, and whether it names a shared file.
#include "share/upload_request.h"

#include <cmath>

#include "fuzzed_parts.h"
#include "share/shared_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  UploadRequest request;
  if (!reads([&] { request = parse_upload_request(text); })) return 0;
  require(request.not_a_get == !text.starts_with("GET "), "only GET is a request");
  for (const double number :
       {request.file_number, request.client_number, request.range_start, request.range_end}) {
    require(std::isfinite(number), "a number is one");
  }
  require(text.find(request.file_name) != std::string_view::npos, "the name is in the text");
  require(request.user_agent.find('\1') == std::string::npos, "the user agent ends at its mark");
  SharedFile file;
  file.name = "song.mp3";
  if (names_file(file, request.file_name)) {
    require(request.file_name == "song.mp3", "only its own name means the file");
  }
  return 0;
}
