#include "platform/sim/sim_screen.h"

#include <cerrno>

#include "platform/error.h"

namespace velmora::sim {

void SimScreen::show(BoxIcon icon, const std::string& title, const std::string& text) {
  boxes.push_back({icon, title, text});
}

void SimScreen::ask(const std::string& title, const std::string& text,
                    std::function<void(bool yes)> on_answer) {
  boxes.push_back({BoxIcon::question, title, text});
  on_answer(answer_yes);
}

void SimScreen::add(const std::string& tip) { tray_tip = tip; }

void SimScreen::remove() { tray_tip.clear(); }

void SimScreen::open_text_file(const std::string& path) {
  if (programs_fail) throw PlatformError::from_errno(ENOENT);
  opened_files.push_back(path);
}

}  // namespace velmora::sim
