// The small windows that show what the program noted: the debug log and the unknown descriptors,
// opened from their labels and hidden by their buttons; the help messages; and what the icon in the
// notification area asks for. It wires these controls and keeps nothing.
#pragma once

#include "form/form.h"
#include "platform/message_boxes.h"

namespace velmora {

// The messages of that icon which mean something, by their numbers.
inline constexpr int kLeftButtonDown = 513;
inline constexpr int kRightButtonDown = 516;

class SmallWindowCommands {
 public:
  SmallWindowCommands(Form& form, MessageBoxes& boxes);
};

}  // namespace velmora
