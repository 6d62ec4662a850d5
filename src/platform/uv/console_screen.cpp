#include "platform/uv/console_screen.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/visible_text.h"

namespace velmora::uv {

void ConsoleScreen::show(BoxIcon, const std::string& title, const std::string& text) {
  write_line(title, text);
}

void ConsoleScreen::ask(const std::string& title, const std::string& text,
                        std::function<void(bool yes)> on_answer) {
  write_line(title, text);
  if (on_answer) on_answer(true);
}

void ConsoleScreen::open_text_file(const std::string&) {
  throw PlatformError(Errc::system, "There is no desktop to open a text file");
}

void ConsoleScreen::write_line(const std::string& title, const std::string& text) {
  std::string words = text;
  std::replace(words.begin(), words.end(), '\n', ' ');
  const std::string line = escape_control_bytes(title + ": " + words) + "\n";
  std::fwrite(line.data(), 1, line.size(), output_);
  std::fflush(output_);
}

}  // namespace velmora::uv
