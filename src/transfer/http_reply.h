// The header with which an upload server answers a download's request. Bytes in, facts out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// No file is larger: up to here every byte count is an exact double.
inline constexpr double kMaxFileSize = 9007199254740992.0;  // 2^53

struct HttpReply {
  std::string server;                           // empty when not told
  std::optional<std::uint64_t> content_length;  // the whole file's, also when only a part follows
};

// Whether the block begins with the upload server's status line. Kept: that line carries no
// protocol version; a standard one is not recognised.
bool is_reply_header(std::string_view block);

// The length of the header at the start of the block, its empty line included; 0 when it does not
// end in this block.
std::size_t reply_header_length(std::string_view block);

// Reads the fields. A length that is no number raises "Type mismatch", one that no file has
// "Overflow", a field without its line end "Invalid procedure call or argument".
HttpReply parse_http_reply(std::string_view header);

}  // namespace velmora
