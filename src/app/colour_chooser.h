// The colour chooser: which of the five colour buttons it is open for, and the colour mixed from
// its three scroll bars. The buttons hold the colours; who shows the window paints with them. It
// wires frmColor and the buttons, and owns no control.
#pragma once

#include <array>
#include <cstdint>

#include "form/form.h"

namespace velmora {

// The five, in the order of their selectors, which count from 1.
std::array<Button*, 5> colour_buttons(Form& form);

// Settles the colours of the five buttons. Kept: black cannot be chosen, it stands for "never
// chosen" as the button-face colour does.
void apply_colors(Form& form);

class ColourChooser {
 public:
  explicit ColourChooser(Form& form);

 private:
  void open_for(int selector);
  void preview();
  void use();
  [[nodiscard]] std::int32_t mixed() const;

  Form& form_;
  int selector_ = 0;  // 1 to 5 once it has been opened
};

}  // namespace velmora
