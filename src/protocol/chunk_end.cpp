#include "protocol/chunk_end.h"

#include "protocol/descriptor_header.h"

namespace velmora {
namespace {

constexpr std::string_view kRequest = "GET ";

}  // namespace

std::size_t lacking_bytes(std::string_view chunk) {
  if (chunk.size() < kHeaderSize) return 0;
  if (chunk.starts_with(kRequest)) return kEndUnknown;
  std::size_t at = 0;
  while (at + kHeaderSize <= chunk.size()) {
    const std::uint32_t length = declared_length(chunk.substr(at));
    if (length > kMaxPayloadLength) return kEndUnknown;
    at += kHeaderSize + length;
  }
  if (at >= chunk.size()) return at - chunk.size();
  return at + kHeaderSize - chunk.size();
}

}  // namespace velmora
