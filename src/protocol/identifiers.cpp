#include "protocol/identifiers.h"

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

}  // namespace velmora
