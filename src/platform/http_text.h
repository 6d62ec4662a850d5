// What every reader of HTTP/1.x needs: the lines and fields of a header, its numbers, the escapes
// of a path. It knows neither requests nor replies. Lines may end in CR LF or LF.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

std::string_view first_line(std::string_view text);  // without its end

// Where the header at the start of the text ends, its empty line included; 0 while that is missing.
std::size_t http_header_length(std::string_view text);

// The value of the first field of that name, in whatever letters, without blanks around it; nothing
// when the header has none. The first line is no field.
std::optional<std::string_view> http_field(std::string_view header, std::string_view name);

// Digits and nothing else. One beyond 2^62 stands for every number beyond that.
std::optional<std::uint64_t> http_number(std::string_view text);

bool same_letters(std::string_view left, std::string_view right);  // large and small ones of ASCII

// "%20" and the like; nothing for an escape that is not "%" and two hexadecimal digits.
std::optional<std::string> without_escapes(std::string_view text);
// Every byte but letters, digits and "-._~" escaped.
std::string with_escapes(std::string_view text);

}  // namespace velmora
