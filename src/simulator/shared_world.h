// The files of a simulated network: names that say who shares them, and bytes that follow from the
// name, so that anybody can tell whether a copy is right.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora::simulator {

inline constexpr const char* kShareFolder = "/share";
inline constexpr const char* kDownFolder = "/down";

std::string shared_name(std::size_t owner, std::size_t number, bool audio);
bool is_shared_name(std::string_view name);
// Byte by byte, so that a shorter file is the beginning of a longer one.
std::string shared_bytes(std::string_view name, std::size_t size);

}  // namespace velmora::simulator
