// The 23 bytes before every descriptor's payload.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/debug_log.h"
#include "protocol/guid_bytes.h"

namespace velmora {

inline constexpr std::size_t kHeaderSize = 23;
inline constexpr std::size_t kTtlOffset = 17;
inline constexpr std::size_t kHopsOffset = 18;
// A longer payload is a bad length; one of exactly this size is good.
inline constexpr double kMaxPayloadLength = 32000;

enum Function : std::uint8_t {
  kPing = 0,
  kPong = 1,
  kPush = 64,
  kQuery = 128,
  kQueryHit = 129,
};

struct DescriptorHeader {
  GuidBytes guid;
  std::uint8_t function = 0;
  std::uint8_t ttl = 0;
  std::uint8_t hops = 0;
  float payload_length = 0;  // bytes; -1 marks a bad length
};

// 23 bytes; any other result writes "Error: header_to_str: wrong length" and is returned as it is.
std::string header_to_str(const DescriptorHeader& header, DebugLog& log);
// The payload length in a header of at least 23 bytes, good or bad.
inline std::uint32_t declared_length(std::string_view bytes) {
  const auto byte_at = [bytes](std::size_t offset) {
    return std::uint32_t{static_cast<std::uint8_t>(bytes[offset])};
  };
  return byte_at(19) | byte_at(20) << 8U | byte_at(21) << 16U | byte_at(22) << 24U;
}
// Fewer than 23 bytes raise "Invalid procedure call or argument".
DescriptorHeader str_to_header(std::string_view bytes);

}  // namespace velmora
