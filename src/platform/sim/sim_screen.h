// The simulated person and desktop: message boxes are recorded and answered from a script, the tray
// icon and started programs are recorded.
#pragma once

#include <string>
#include <vector>

#include "platform/desktop.h"
#include "platform/message_boxes.h"

namespace velmora::sim {

struct ShownBox {
  BoxIcon icon;
  std::string title;
  std::string text;
};

class SimScreen : public MessageBoxes, public TrayIcon, public ProgramStarter {
 public:
  void show(BoxIcon icon, const std::string& title, const std::string& text) override;
  void ask(const std::string& title, const std::string& text,
           std::function<void(bool yes)> on_answer) override;
  void add(const std::string& tip) override;
  void remove() override;
  void open_text_file(const std::string& path) override;

  std::vector<ShownBox> boxes;
  bool answer_yes = true;
  std::string tray_tip;  // empty while there is no icon
  std::vector<std::string> opened_files;
  bool programs_fail = false;
};

}  // namespace velmora::sim
