#include "app/profile_paths.h"

#include <cstdlib>
#include <filesystem>

namespace velmora {
namespace {

// A relative XDG folder is invalid and treated as unset.
std::string xdg_folder(const char* variable, const char* below_home) {
  const char* value = std::getenv(variable);
  if (value != nullptr && value[0] == '/') return value;
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr && home[0] != '\0' ? home : ".") + below_home;
}

}  // namespace

ProfilePaths profile_paths(const std::string& given) {
  if (!given.empty()) {
    const std::string profile = std::filesystem::absolute(given).lexically_normal().string();
    return {profile, (std::filesystem::path(profile) / "settings.toml").string()};
  }
  return {xdg_folder("XDG_DATA_HOME", "/.local/share") + "/velmora",
          xdg_folder("XDG_CONFIG_HOME", "/.config") + "/velmora/settings.toml"};
}

}  // namespace velmora
