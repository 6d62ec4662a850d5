// What the window knows of a column beside its caption: whether it holds numbers and how much room
// its cells usually take.
#pragma once

#include <string_view>

namespace velmora::ui {

struct ListColumn {
  std::string_view caption;
  int characters;  // how wide, in digits of the list's font
  bool numbers;    // written to the right
};

inline constexpr std::string_view kStatusColumn = "Status";

// Behind a number, so that it does not run into the text of the next column.
inline constexpr char16_t kNumberGap[] = u"\u00A0\u00A0";

// A column that is not known is text, a little wider than its caption.
ListColumn list_column(std::string_view caption);

}  // namespace velmora::ui
