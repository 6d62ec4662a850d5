#include "share/upload_request.h"

#include <algorithm>

#include "platform/number.h"

namespace velmora {
namespace {

constexpr auto kNone = std::string_view::npos;
constexpr std::size_t kNumberStart = 9;  // behind "GET /get/"

std::string_view between(std::string_view text, std::size_t start, std::size_t end) {
  start = std::min(start, text.size());
  return text.substr(start, std::max(start, std::min(end, text.size())) - start);
}

void parse_file(std::string_view text, UploadRequest& request) {
  const std::size_t slash = text.find('/', kNumberStart);
  if (slash == kNone) return;
  request.file_number = val(between(text, kNumberStart, slash));
  const std::size_t http = text.find(" HTTP", slash);
  if (http != kNone) request.file_name = between(text, slash + 1, http);
}

void parse_user_agent(std::string_view text, UploadRequest& request) {
  constexpr std::string_view kUserAgent = "User-Agent: ";
  const std::size_t start = text.find(kUserAgent);
  if (start == kNone) return;
  const std::string_view agent = between(text, start + kUserAgent.size(), text.find('\r', start));
  const std::size_t mark = agent.find('\1');
  if (mark != kNone) request.client_number = val(agent.substr(mark + 1));
  request.user_agent = agent.substr(0, mark);
}

void parse_range(std::string_view text, UploadRequest& request) {
  constexpr std::string_view kRange = "Range: bytes=";
  const std::size_t start = text.find(kRange);
  if (start == kNone) return;
  const std::size_t dash = text.find('-', start);
  const std::size_t number_start = start + kRange.size();
  request.range_start = val(between(text, number_start, std::min(dash, text.find('\r', start))));
  if (dash != kNone) request.range_end = val(between(text, dash + 1, text.find('\r', dash)));
}

}  // namespace

UploadRequest parse_upload_request(std::string_view text) {
  UploadRequest request;
  if (text.substr(0, 4) != "GET ") return request;
  request.not_a_get = false;
  parse_file(text, request);
  parse_user_agent(text, request);
  parse_range(text, request);
  return request;
}

}  // namespace velmora
