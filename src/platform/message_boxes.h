// What the engine asks of the person at the screen. Boxes are opened, never waited for: the answer
// comes by callback, possibly inside the call (headless). Texts are shown as plain text.
#pragma once

#include <functional>
#include <string>

namespace velmora {

enum class BoxIcon { information, critical, question };

class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  virtual void show(BoxIcon icon, const std::string& title, const std::string& text) = 0;
  virtual void ask(const std::string& title, const std::string& text,
                   std::function<void(bool yes)> on_answer) = 0;
};

}  // namespace velmora
