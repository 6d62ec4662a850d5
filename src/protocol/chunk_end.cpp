#include "protocol/chunk_end.h"

#include <cstdint>

#include "protocol/descriptor_header.h"

namespace velmora {
namespace {

constexpr std::size_t kLengthOffset = 19;
constexpr std::string_view kRequest = "GET ";

std::size_t payload_length(const char* header) {
  std::uint32_t length = 0;
  for (std::size_t offset = kHeaderSize; offset-- > kLengthOffset;) {
    length = length << 8U | static_cast<unsigned char>(header[offset]);
  }
  return length;
}

}  // namespace

std::size_t lacking_bytes(std::string_view chunk) {
  if (chunk.size() < kHeaderSize || chunk.starts_with(kRequest)) return 0;
  std::size_t at = 0;
  while (at + kHeaderSize <= chunk.size()) {
    const std::size_t length = payload_length(chunk.data() + at);
    if (length > static_cast<std::size_t>(kMaxPayloadLength)) return 0;
    at += kHeaderSize + length;
  }
  if (at >= chunk.size()) return at - chunk.size();
  return at + kHeaderSize - chunk.size();
}

}  // namespace velmora
