#include "simulator/shared_world.h"

#include <fmt/format.h>

namespace velmora::simulator {
namespace {

constexpr std::string_view kBeginning = "blue river ";

}  // namespace

std::string shared_name(std::size_t owner, std::size_t number, bool audio) {
  return fmt::format("{}{} of {}.{}", kBeginning, number, owner, audio ? "mp3" : "txt");
}

bool is_shared_name(std::string_view name) { return name.starts_with(kBeginning); }

std::string shared_bytes(std::string_view name, std::size_t size) {
  std::uint64_t state = 1469598103934665603U;
  for (const char c : name) state = (state ^ static_cast<unsigned char>(c)) * 1099511628211U;
  std::string bytes(size, '\0');
  for (char& byte : bytes) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    byte = static_cast<char>(state >> 56U);
  }
  return bytes;
}

}  // namespace velmora::simulator
