// The screen of a program without one: boxes become lines on standard error, a question is answered
// Yes at once, there is no notification area, and nothing can open a text file.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "platform/desktop.h"
#include "platform/message_boxes.h"

namespace velmora::uv {

class ConsoleScreen : public MessageBoxes, public TrayIcon, public ProgramStarter {
 public:
  explicit ConsoleScreen(std::FILE* output = stderr) : output_(output) {}

  void show(BoxIcon icon, const std::string& title, const std::string& text) override;
  void ask(const std::string& title, const std::string& text,
           std::function<void(bool yes)> on_answer) override;
  void add(const std::string&) override {}
  void remove() override {}
  void open_text_file(const std::string& path) override;

 private:
  void write_line(const std::string& title, const std::string& text);

  std::FILE* output_;  // not owned
};

}  // namespace velmora::uv
