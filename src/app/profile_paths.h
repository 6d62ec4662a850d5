// Where a servent's files live: the folder given with --profile, or the user's XDG folders.
#pragma once

#include <string>

namespace velmora {

struct ProfilePaths {
  std::string profile;   // absolute; lists, logs, lock, control socket
  std::string settings;  // absolute path of settings.toml
};

// `given` is the option's value, empty when it was not given: then $XDG_DATA_HOME/velmora and
// $XDG_CONFIG_HOME/velmora/settings.toml, with the usual folders below $HOME where unset.
ProfilePaths profile_paths(const std::string& given);

}  // namespace velmora
