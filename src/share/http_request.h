// An upload request as browsers and other common programs send it: a request line that ends in
// " HTTP/1.0" or " HTTP/1.1", fields in any case. Bytes in, facts out; what it names is not checked
// against the shared files. A classic request, whose line ends in " HTTP:/1.0", is none of these.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "share/upload_request.h"

namespace velmora {

// One range of bytes as it was asked for; "-n", the last n bytes, has no first.
struct HttpRange {
  std::optional<std::uint64_t> first;
  std::optional<std::uint64_t> last;
};

struct HttpRequest {
  bool understood = false;  // GET or HEAD, with a path whose escapes are whole
  bool head = false;        // only the header is wanted
  // Number and decoded name of "/get/NUMBER/NAME", and the user agent. Another path gives number 0.
  UploadRequest file;
  // None when none was asked for, or several, or one that cannot be understood, or one that only
  // counts for a version of the file that this server cannot tell.
  std::optional<HttpRange> range;
};

// Whether the text begins with a whole request line of that form.
bool is_http_request(std::string_view text);

HttpRequest parse_http_request(std::string_view text);

}  // namespace velmora
