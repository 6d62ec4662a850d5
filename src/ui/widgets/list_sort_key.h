// What a cell is sorted by: a byte string whose plain order is the order that people expect.
// Numbers come before text and compare as numbers, several of them ("12 / 3") one after the other;
// text compares without regard to case and the numbers inside it as numbers, so that an address
// goes by its four numbers and its port. The key of an empty cell is empty.
#pragma once

#include <string>
#include <string_view>

namespace velmora::ui {

std::string sort_key(std::string_view cell);

}  // namespace velmora::ui
