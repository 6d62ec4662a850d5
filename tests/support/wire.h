// Bytes as they go over the wire, built without the program's own encoders, so that an error there
// cannot hide in a test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

inline std::string little_endian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 255U);
  return text;
}

// A header that claims so many bytes of payload.
inline std::string descriptor_header(std::string guid, int function, int ttl, int hops,
                                     std::uint64_t claimed) {
  guid.resize(16, 'x');
  for (const int value : {function, ttl, hops}) guid += static_cast<char>(value);
  return guid + little_endian(claimed, 4);
}

inline std::string descriptor(const std::string& guid, int function, int ttl, int hops,
                              std::string_view payload) {
  return descriptor_header(guid, function, ttl, hops, payload.size()).append(payload);
}

}  // namespace velmora
