// The text of the program's list files: lines of fields separated by commas and ended by CR LF,
// strings in double quotes (a quote inside is doubled, every other byte stands as it is), numbers
// bare, dates as #2000-06-30 14:05:00#. Text only: who reads or writes the file is not its concern.
#pragma once

#include <string>
#include <string_view>

#include "platform/event_loop.h"

namespace velmora {

inline constexpr std::string_view kListLineEnd = "\r\n";

void put_quoted(std::string& text, std::string_view field);
void put_date(std::string& text, const LocalTime& date);

// Takes the fields of a text one after another. A field that is not what is asked for raises "Type
// mismatch", the end of the text "Input past end of file".
class ListFileReader {
 public:
  explicit ListFileReader(std::string_view text) : text_(text) {}

  std::string string_field();
  double number_field();
  LocalTime date_field();  // a date without a time is its midnight
  void comma();
  void line_end();  // CR LF, either alone, or the end of the text

 private:
  [[nodiscard]] bool at_end() const { return at_ >= text_.size(); }
  [[nodiscard]] char peek() const;
  void take(char wanted);
  int digits(int count);

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace velmora
