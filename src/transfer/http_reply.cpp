#include "transfer/http_reply.h"

#include "platform/error.h"
#include "platform/number.h"

namespace velmora {
namespace {

// The text that starts `skip` characters after the field's start, up to the next CR.
std::optional<std::string> field(std::string_view header, std::string_view name, std::size_t skip) {
  const std::size_t start = header.find(name);
  if (start == std::string_view::npos) return std::nullopt;
  const std::size_t end = header.find('\r', start);
  if (end == std::string_view::npos) throw PlatformError(Errc::invalid_call);
  return start + skip < end ? std::string(header.substr(start + skip, end - start - skip))
                            : std::string();
}

}  // namespace

bool is_reply_header(std::string_view block) { return block.starts_with("HTTP 200 OK\r\n"); }

std::size_t reply_header_length(std::string_view block) {
  constexpr std::string_view kEnd = "\r\n\r\n";
  const std::size_t end = block.find(kEnd);
  return end == std::string_view::npos ? 0 : end + kEnd.size();
}

HttpReply parse_http_reply(std::string_view header) {
  HttpReply reply;
  reply.server = field(header, "Server:", 8).value_or("");
  if (const auto length = field(header, "Content-length:", 16)) {
    const double value = number(*length);
    if (!(value >= 0 && value <= kMaxFileSize)) throw PlatformError(Errc::overflow);
    reply.content_length = static_cast<std::uint64_t>(number(decimal_text(value)));
  }
  return reply;
}

}  // namespace velmora
