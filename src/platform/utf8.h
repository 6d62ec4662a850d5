// Texts as people read them: byte strings are UTF-8 where they are valid UTF-8, else Latin-1.
// Valid means shortest form, no surrogates, nothing above U+10FFFF. No escaping is done here.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

// How many bytes the character that starts the text takes, 1 to 4; 0 if it is no valid character.
std::size_t utf8_character(std::string_view text);

bool is_utf8(std::string_view text);

// The text itself if it is valid UTF-8, else every byte as the code point of the same number.
std::string as_utf8(std::string_view bytes);

}  // namespace velmora
