// Query hits as other servents send them, built byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "servent_rig.h"

namespace velmora::sim {

struct HitFile {
  std::uint32_t index;
  std::uint32_t size;
  std::string name;
};

// The address is 10.0.0.`host`.
inline std::string query_hit(int host, const std::vector<HitFile>& files,
                             const std::string& guid = "a search") {
  std::string payload(1, static_cast<char>(files.size()));
  payload += little_endian(6345, 2);
  payload += std::string("\x0A\0\0", 3) + static_cast<char>(host);
  payload += little_endian(56, 4);
  for (const HitFile& file : files) {
    payload += little_endian(file.index, 4) + little_endian(file.size, 4);
    payload += file.name + std::string(2, '\0');
  }
  return descriptor(guid, 129, 3, 0, payload + "servent-servent-");
}

}  // namespace velmora::sim
