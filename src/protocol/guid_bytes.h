// The identifier in a descriptor's header: always sixteen bytes, at no cost in memory beyond them.
// What is assigned to it is brought to that width: cut, or filled with blanks. It knows nothing of
// how identifiers are made or where they were seen.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string_view>

namespace velmora {

inline constexpr std::size_t kGuidSize = 16;

class GuidBytes {
 public:
  GuidBytes() { bytes_.fill(' '); }
  GuidBytes& operator=(std::string_view bytes) {
    if (bytes.size() >= kGuidSize) {
      std::memcpy(bytes_.data(), bytes.data(), kGuidSize);  // of a known width, without a call
    } else {
      bytes_.fill(' ');
      bytes.copy(bytes_.data(), kGuidSize);
    }
    return *this;
  }
  operator std::string_view() const { return {bytes_.data(), kGuidSize}; }

  bool operator==(const GuidBytes&) const = default;
  friend bool operator==(const GuidBytes& guid, std::string_view bytes) {
    return std::string_view(guid) == bytes;
  }

 private:
  std::array<char, kGuidSize> bytes_;
};

struct GuidHash {
  std::size_t operator()(const GuidBytes& guid) const {
    return std::hash<std::string_view>()(guid);
  }
};

}  // namespace velmora
