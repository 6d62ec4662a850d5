#include "protocol/descriptor_header.h"

#include "platform/number.h"
#include "protocol/conversions.h"

namespace velmora {

std::string header_to_str(const DescriptorHeader& header, DebugLog& log) {
  std::string bytes = header.guid;
  bytes.resize(kGuidSize, ' ');
  for (const std::uint8_t field : {header.function, header.ttl, header.hops}) {
    bytes += static_cast<char>(field);
  }
  bytes += Dword_to_Str(header.payload_length);
  if (bytes.size() != kHeaderSize) log.debug_log("Error: header_to_str: wrong length");
  return bytes;
}

DescriptorHeader str_to_header(std::string_view bytes, DebugLog& log) {
  DescriptorHeader header;
  header.guid = bytes.substr(0, kGuidSize);
  header.function = static_cast<std::uint8_t>(bytes.at(16));
  header.ttl = static_cast<std::uint8_t>(bytes.at(17));
  header.hops = static_cast<std::uint8_t>(bytes.at(18));
  header.payload_length = to_single(Str_to_Dword(bytes.substr(19, 4), log));
  if (header.payload_length > kMaxPayloadLength) header.payload_length = -1;
  return header;
}

}  // namespace velmora
