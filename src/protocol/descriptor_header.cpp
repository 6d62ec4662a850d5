#include "protocol/descriptor_header.h"

#include "platform/error.h"
#include "protocol/conversions.h"

namespace velmora {

std::string header_to_str(const DescriptorHeader& header, DebugLog& log) {
  std::string bytes(header.guid);
  for (const std::uint8_t field : {header.function, header.ttl, header.hops}) {
    bytes += static_cast<char>(field);
  }
  bytes += Dword_to_Str(header.payload_length);
  if (bytes.size() != kHeaderSize) log.debug_log("Error: header_to_str: wrong length");
  return bytes;
}

DescriptorHeader str_to_header(std::string_view bytes) {
  if (bytes.size() < kHeaderSize) throw PlatformError(Errc::invalid_call);
  const auto byte_at = [bytes](std::size_t offset) {
    return static_cast<std::uint8_t>(bytes[offset]);
  };
  DescriptorHeader header;
  header.guid = bytes.substr(0, kGuidSize);
  header.function = byte_at(16);
  header.ttl = byte_at(kTtlOffset);
  header.hops = byte_at(kHopsOffset);
  const std::uint32_t length = declared_length(bytes);
  header.payload_length = length > kMaxPayloadLength ? -1 : static_cast<float>(length);
  return header;
}

}  // namespace velmora
