// Text for a terminal. File names, host names and messages come from strangers: what could drive
// the terminal or mislead the eye (control, direction-changing and unseen characters, bytes that
// are no UTF-8) is shown as \xNN or \uNNNN. Widths are terminal columns. No I/O.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora::cli {

// One line: line breaks and tabs are made visible too.
std::string visible(std::string_view text);
// Several lines: line feeds and tabs stay, a carriage return before a line feed goes.
std::string visible_lines(std::string_view text);

// Columns that an already visible text takes: 2 for a wide character, 0 for a combining one.
std::size_t columns(std::string_view text);
// At most `width` columns; what is cut ends in an ellipsis.
std::string cut_to(std::string_view text, std::size_t width);
std::string padded(std::string_view text, std::size_t width, bool to_the_right = false);

// Bytes of the command line as JSON can carry them: UTF-8 as it is, anything else as Latin-1.
std::string to_wire(std::string_view bytes);

}  // namespace velmora::cli
