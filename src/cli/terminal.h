// What standard output is: a terminal with a size, or a file or pipe that gets plain text only.
#pragma once

#include <termios.h>

#include <cstddef>
#include <string_view>

namespace velmora::cli {

struct TerminalSize {
  std::size_t columns;
  std::size_t lines;
};

bool output_is_terminal();
bool input_is_terminal();
TerminalSize terminal_size();  // 80 x 24 where it is unknown

// Writes to standard output at once.
void write_now(std::string_view text);

// While it lives, the terminal shows a screen of its own without a cursor, and keys come one by
// one and unseen. Its end gives back what was there. Needs standard output to be a terminal.
class WholeScreen {
 public:
  WholeScreen();
  ~WholeScreen();
  WholeScreen(const WholeScreen&) = delete;
  WholeScreen& operator=(const WholeScreen&) = delete;

 private:
  termios keys_before_ = {};
  bool keys_changed_ = false;
};

}  // namespace velmora::cli
