#include "share/http_answer.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmora {
namespace {

constexpr std::string_view kBegin = "HTTP/1.1 {}\r\nServer: Velmora\r\nConnection: close\r\n";
constexpr std::string_view kFile =
    "Content-Type: application/octet-stream\r\nAccept-Ranges: bytes\r\n";

std::string begin_of(std::string_view status) { return fmt::format(kBegin, status); }

HttpAnswer unsatisfiable(std::uint64_t size) {
  return {fmt::format("{}Content-Range: bytes */{}\r\nContent-Length: 0\r\n\r\n",
                      begin_of("416 Range Not Satisfiable"), size)};
}

}  // namespace

HttpAnswer http_answer(const HttpRequest& request, std::uint64_t size) {
  HttpAnswer answer{{}, true, 0, size};
  if (!request.range) {
    answer.header = fmt::format("{}{}Content-Length: {}\r\n\r\n", begin_of("200 OK"), kFile, size);
    return answer;
  }
  const HttpRange& range = *request.range;
  if (range.first) {
    answer.begin = *range.first;
    if (range.last) answer.end = std::min(*range.last + 1, size);
  } else {
    answer.begin = size - std::min(*range.last, size);
  }
  if (answer.begin >= answer.end) return unsatisfiable(size);
  answer.header = fmt::format("{}{}Content-Range: bytes {}-{}/{}\r\nContent-Length: {}\r\n\r\n",
                              begin_of("206 Partial Content"), kFile, answer.begin, answer.end - 1,
                              size, answer.end - answer.begin);
  return answer;
}

std::string http_refusal(HttpRefusal why, std::string_view text, bool head) {
  std::string_view line = "400 Bad Request";
  if (why == HttpRefusal::not_found) line = "404 Not Found";
  if (why == HttpRefusal::busy) line = "503 Service Unavailable\r\nRetry-After: 30";
  return fmt::format("{}Content-Type: text/plain; charset=utf-8\r\nContent-Length: {}\r\n\r\n{}{}",
                     begin_of(line), text.size() + 1, head ? "" : text, head ? "" : "\n");
}

}  // namespace velmora
