// How the lists of results and downloads show where a file is.
#pragma once

#include <string>

#include "transfer/search_result.h"

namespace velmora {

// Host name or address, ":" and port. Names shorter than 3 characters are no names.
std::string location_text(const search_result& result, bool show_dns);
std::string location_tooltip(const search_result& result, bool show_dns);

}  // namespace velmora
