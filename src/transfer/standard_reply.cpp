#include "transfer/standard_reply.h"

#include <fmt/format.h>

#include <optional>

#include "platform/http_text.h"
#include "platform/number.h"
#include "transfer/http_reply.h"

namespace velmora {
namespace {

constexpr std::string_view kVersion = "HTTP/";
constexpr auto kMostBytes = static_cast<std::uint64_t>(kMaxFileSize);

// 0 for a line that names none.
int code_of(std::string_view header) {
  const std::string_view line = first_line(header);
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos) return 0;
  const auto code = http_number(line.substr(blank + 1, 3));
  return code ? static_cast<int>(*code) : 0;
}

std::string refusal_of(int code) {
  const char* why = "Refused";
  if (code == 404 || code == 410) why = "Not found";
  if (code == 401 || code == 403) why = "Not allowed";
  if (code == 416) why = "Nothing more to fetch";
  if (code == 429 || code == 503) why = "Busy, try later";
  if (code >= 300 && code < 400) why = "Moved";
  return code == 0 ? "No HTTP OK!" : fmt::format("{} ({})", why, code);
}

// Whether the body is something else than the bytes of the file.
bool is_coded(std::string_view header, std::string_view field) {
  const auto coding = http_field(header, field);
  return coding && !coding->empty() && !same_letters(*coding, "identity");
}

bool same_size(std::uint64_t size, std::uint64_t known_size) {
  return known_size == 0 ||
         to_single(static_cast<double>(size)) == to_single(static_cast<double>(known_size));
}

struct ContentRange {
  std::optional<std::uint64_t> first;
  std::optional<std::uint64_t> last;
  std::optional<std::uint64_t> size;
};

// "bytes 5-9/10", "bytes 5-9/*", "bytes */10"; what is not there stays empty.
ContentRange content_range(std::string_view header) {
  constexpr std::string_view kUnit = "bytes ";
  const std::string_view value = http_field(header, "Content-Range").value_or("");
  const std::size_t slash = value.find('/');
  if (!same_letters(value.substr(0, kUnit.size()), kUnit) || slash == std::string_view::npos) {
    return {};
  }
  const std::string_view range = value.substr(kUnit.size(), slash - kUnit.size());
  const std::size_t dash = range.find('-');
  ContentRange read{{}, {}, http_number(value.substr(slash + 1))};
  if (dash == std::string_view::npos) return read;
  read.first = http_number(range.substr(0, dash));
  read.last = http_number(range.substr(dash + 1));
  return read;
}

// The whole file comes. What is there already is passed over, if it can be a part of that.
void read_whole(std::string_view header, std::uint64_t known_size, StandardReply& reply) {
  const auto length = http_number(http_field(header, "Content-Length").value_or(""));
  if (!length || *length > kMostBytes) {
    reply.refusal = "No length told";
    return;
  }
  reply.size = *length;
  if (reply.start > reply.size || !same_size(reply.size, known_size)) reply.start = 0;
  reply.skip = reply.start;
}

// The rest of the file comes, from exactly the byte that was asked for up to its end.
void read_part(std::string_view header, std::uint64_t known_size, StandardReply& reply) {
  const ContentRange range = content_range(header);
  const bool rest = range.first == reply.start && range.last >= reply.start &&
                    range.size.value_or(range.last.value_or(0) + 1) == *range.last + 1;
  if (!rest || *range.last >= kMostBytes) {
    reply.refusal = "Another part was sent";
    return;
  }
  reply.size = *range.last + 1;
  reply.file_is_other = reply.start > 0 && !same_size(reply.size, known_size);
  if (reply.file_is_other) reply.refusal = "The file has changed";
}

// Nothing is left to send: right when all of the file is there.
void read_nothing(std::string_view header, StandardReply& reply) {
  const auto size = content_range(header).size;
  reply.size = size.value_or(0);
  if (reply.start > 0 && size == reply.start) return;
  reply.file_is_other = size && *size < reply.start;
  reply.refusal = reply.file_is_other ? "The file has changed" : refusal_of(416);
}

}  // namespace

ReplyKind kind_of_reply(std::string_view bytes) {
  if (bytes.starts_with(kVersion)) return ReplyKind::standard;
  if (kVersion.starts_with(bytes)) return ReplyKind::undecided;
  return bytes.starts_with('<') ? ReplyKind::page : ReplyKind::classic;
}

StandardReply read_standard_reply(std::string_view header, std::uint64_t start,
                                  std::uint64_t known_size) {
  StandardReply reply;
  reply.start = start;
  reply.server = http_field(header, "Server").value_or("");
  const int code = code_of(header);
  if (code == 416) {
    read_nothing(header, reply);
  } else if (code != 200 && code != 206) {
    reply.refusal = refusal_of(code);
  } else if (is_coded(header, "Transfer-Encoding") || is_coded(header, "Content-Encoding")) {
    reply.refusal = "Sent in a form that is not understood";
  } else if (code == 200) {
    read_whole(header, known_size, reply);
  } else {
    read_part(header, known_size, reply);
  }
  return reply;
}

}  // namespace velmora
