// Texts from strangers made safe for one line of a log or a terminal.
#pragma once

#include <string>
#include <string_view>

namespace velmora {

// Every control byte (0 to 31 and 127) as \xHH; all other bytes stay.
std::string escape_control_bytes(std::string_view text);

}  // namespace velmora
