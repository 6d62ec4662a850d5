// How the lists of hosts, results and downloads show where something is.
#pragma once

#include <string>

namespace velmora {

// Host name or address, ":" and port. Names shorter than 3 characters are no names.
std::string host_location_text(const std::string& address, const std::string& port,
                               const std::string& host_name, bool show_dns);
std::string host_location_tooltip(const std::string& address, const std::string& port,
                                  const std::string& host_name, bool show_dns);

}  // namespace velmora
