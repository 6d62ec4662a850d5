#include "protocol/identifiers.h"

#include <cstdint>

#include "protocol/conversions.h"
#include "protocol/guid_bytes.h"

namespace velmora {

std::string random_guid(RandomSource& random) {
  std::string guid(kGuidSize, '\0');
  random.fill(guid);
  guid[8] = '\xFF';
  guid[15] = '\0';
  return guid;
}

std::string Identifiers::next() const {
  if (behaviour_.random_identifiers) return random_guid(random_);
  return GetGUID(loop_.local_time());
}

std::string Identifiers::once(std::string_view mark) const {
  if (behaviour_.random_identifiers) return random_guid(random_);
  std::string guid(mark.substr(0, 8));
  const auto now_ms = static_cast<std::uint64_t>(loop_.now_ms());
  for (unsigned shift = 0; shift < 64; shift += 8) guid += static_cast<char>(now_ms >> shift);
  guid.resize(kGuidSize, '\0');
  return guid;
}

}  // namespace velmora
