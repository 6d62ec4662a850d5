// What the upload server says to a request of the common form: the header of a file's answer with
// the bytes that follow it, or a whole answer that says why there is no file. It sends nothing.
// Sizes and positions are bytes from 0.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "share/http_request.h"

namespace velmora {

struct HttpAnswer {
  std::string header;
  bool has_file = false;  // of which the bytes begin..end, end not included, follow a GET
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

// The answer for a file of that size, which is not empty.
HttpAnswer http_answer(const HttpRequest& request, std::uint64_t size);

enum class HttpRefusal { bad_request, not_found, busy };

// With the text as its body, unless only the header was asked for.
std::string http_refusal(HttpRefusal why, std::string_view text, bool head);

}  // namespace velmora
