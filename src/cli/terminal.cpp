#include "cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

namespace velmora::cli {

bool output_is_terminal() { return isatty(STDOUT_FILENO) == 1; }
bool input_is_terminal() { return isatty(STDIN_FILENO) == 1; }

TerminalSize terminal_size() {
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
    return {80, 24};
  }
  return {size.ws_col, size.ws_row};
}

void write_now(std::string_view text) {
  if (!text.empty()) std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

WholeScreen::WholeScreen() {
  if (input_is_terminal() && tcgetattr(STDIN_FILENO, &keys_before_) == 0) {
    termios keys = keys_before_;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VSUSP] = _POSIX_VDISABLE;  // stopped here, the shell would be left on this screen
    keys_changed_ = tcsetattr(STDIN_FILENO, TCSANOW, &keys) == 0;
  }
  write_now("\x1b[?1049h\x1b[?25l\x1b[?7l");
}

WholeScreen::~WholeScreen() {
  write_now("\x1b[?7h\x1b[?25h\x1b[?1049l");
  if (keys_changed_) tcsetattr(STDIN_FILENO, TCSANOW, &keys_before_);
}

}  // namespace velmora::cli
