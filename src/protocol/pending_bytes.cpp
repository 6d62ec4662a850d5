#include "protocol/pending_bytes.h"

#include <algorithm>

#include "protocol/descriptor_header.h"
#include "protocol/payloads.h"

namespace velmora {

std::size_t believed_size(std::string_view bytes) {
  const std::uint32_t length = declared_length(bytes);
  return length > static_cast<std::uint32_t>(kMaxQueryHitLength) ? bytes.size()
                                                                 : kHeaderSize + length;
}

std::string_view PendingBytes::complete(std::string_view chunk, std::int64_t now_ms,
                                        std::string& joined) {
  if (now_ms - last_ms_ > kMostPendingMs) clear();
  last_ms_ = now_ms;
  const std::size_t skipped = std::min(skip_, chunk.size());
  skip_ -= skipped;
  chunk.remove_prefix(skipped);
  if (bytes_.empty()) {
    const std::size_t end = whole(chunk);
    bytes_ = chunk.substr(end);
    return chunk.substr(0, end);
  }
  bytes_ += chunk;
  const std::size_t end = whole(bytes_);
  if (end == 0) return {};
  joined.swap(bytes_);
  bytes_.assign(joined, end);
  return std::string_view(joined).substr(0, end);
}

// How many bytes from the first on are whole descriptors or will never be one. What is to come of a
// descriptor that is too long is skipped, so that the stream stays in step.
std::size_t PendingBytes::whole(std::string_view bytes) {
  std::size_t end = 0;
  while (bytes.size() - end >= kHeaderSize) {
    const std::string_view rest = bytes.substr(end);
    const std::size_t size = believed_size(rest);
    if (size > rest.size()) {
      if (declared_length(rest) <= kMaxPayloadLength) break;
      skip_ = size - rest.size();
      return bytes.size();
    }
    end += size;
  }
  return end;
}

void PendingBytes::clear() {
  std::string().swap(bytes_);
  skip_ = 0;
}

}  // namespace velmora
