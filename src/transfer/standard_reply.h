// The header with which common web servers answer a download's request, "HTTP/1.0 200 OK" and the
// like: bytes in, and out what a download does with it. Positions and sizes are bytes from 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::size_t kMaxStandardHeader = 8192;  // bytes

enum class ReplyKind {
  undecided,  // too few bytes
  classic,    // anything else: the upload server's own header, its messages, noise
  standard,   // begins with a status line that carries a version
  page,       // a web page without a header, with which some servers refuse a classic request
};
ReplyKind kind_of_reply(std::string_view bytes);

struct StandardReply {
  std::string refusal;         // the status of a download that gets no bytes; empty when it does
  bool file_is_other = false;  // what was fetched before is not the beginning of this file
  std::string server;          // empty when not told
  std::uint64_t size = 0;      // the whole file's
  std::uint64_t start = 0;     // where in the file the bytes belong that are written
  std::uint64_t skip = 0;      // bytes that come before those and are there already
};

// The header is whole. `start` is what was asked for; `known_size` the file's size as far as it is
// known by then, perhaps from an answer that told it in single precision, 0 when it is not.
StandardReply read_standard_reply(std::string_view header, std::uint64_t start,
                                  std::uint64_t known_size);

}  // namespace velmora
