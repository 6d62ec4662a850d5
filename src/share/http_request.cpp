#include "share/http_request.h"

#include "platform/http_text.h"

namespace velmora {
namespace {

constexpr auto kNone = std::string_view::npos;

// False when the path has a broken escape.
bool parse_path(std::string_view path, UploadRequest& file) {
  constexpr std::string_view kGet = "/get/";
  path = path.substr(0, path.find('?'));
  const auto whole = without_escapes(path);
  if (!whole) return false;
  file.file_name = *whole;  // shown as it is when it names no file
  if (!path.starts_with(kGet)) return true;
  path.remove_prefix(kGet.size());
  const std::size_t slash = path.find('/');
  const auto number = http_number(path.substr(0, slash));
  if (!number || slash == kNone) return true;
  file.file_number = static_cast<double>(*number);
  file.file_name = *without_escapes(path.substr(slash + 1));
  return true;
}

std::optional<HttpRange> parse_range(std::string_view value) {
  constexpr std::string_view kUnit = "bytes=";
  if (!same_letters(value.substr(0, kUnit.size()), kUnit)) return std::nullopt;
  value.remove_prefix(kUnit.size());
  const std::size_t dash = value.find('-');
  if (dash == kNone) return std::nullopt;
  const std::string_view first = value.substr(0, dash);
  const std::string_view last = value.substr(dash + 1);
  const HttpRange range{http_number(first), http_number(last)};
  const bool read = (first.empty() || range.first) && (last.empty() || range.last);
  const bool turned = range.first && range.last && *range.first > *range.last;
  if (!read || turned || (first.empty() && last.empty())) return std::nullopt;
  return range;
}

}  // namespace

bool is_http_request(std::string_view text) {
  if (text.find('\n') == kNone) return false;
  const std::string_view line = first_line(text);
  return line.ends_with(" HTTP/1.0") || line.ends_with(" HTTP/1.1");
}

HttpRequest parse_http_request(std::string_view text) {
  HttpRequest request;
  const std::string_view line = first_line(text);
  const std::size_t method_end = line.find(' ');
  const std::size_t path_end = line.rfind(' ');
  const std::string_view method = line.substr(0, method_end);
  request.head = method == "HEAD";
  request.file.not_a_get = method != "GET";
  if (const auto agent = http_field(text, "User-Agent")) request.file.user_agent = *agent;
  if (path_end <= method_end || (request.file.not_a_get && !request.head)) return request;
  request.understood =
      parse_path(line.substr(method_end + 1, path_end - method_end - 1), request.file);
  // The condition names a version by a mark that no answer of this server gives.
  const auto range = http_field(text, "Range");
  if (range && !http_field(text, "If-Range")) request.range = parse_range(*range);
  return request;
}

}  // namespace velmora
