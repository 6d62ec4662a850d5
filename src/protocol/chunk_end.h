// Where a chunk of descriptor data ends: a look at the declared lengths only. It is no framing, and
// changes nothing about it: it tells the socket that is about to announce a chunk whether a packet
// of the last descriptor is probably still on its way. Sizes are bytes.
#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// Of a download request and behind a bad length: the framing drops the rest of the chunk.
inline constexpr std::size_t kEndUnknown = static_cast<std::size_t>(-1);

// How much is lacking for the last descriptor's header or payload to be whole. 0 when nothing is,
// and for fewer bytes than a header (a handshake).
[[nodiscard]] std::size_t lacking_bytes(std::string_view chunk);

}  // namespace velmora
