// Texts from strangers made safe for one line of a log or a terminal.
#pragma once

#include <string>
#include <string_view>

namespace velmora {

// Every control byte (0 to 31 and 127) as \xHH, and so both bytes of a control character of UTF-8
// (U+0080 to U+009F), which terminals obey as well; all other bytes stay.
std::string escape_control_bytes(std::string_view text);

}  // namespace velmora
