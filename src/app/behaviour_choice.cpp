#include "app/behaviour_choice.h"

#include <algorithm>

namespace velmora {

BehaviourChoice::BehaviourChoice(Form& form, Behaviour& behaviour)
    : form_(form), behaviour_(behaviour) {
  form_.behaviour.on_choose = [this] {
    if (!choosing_) choose_profile();
  };
  for (BehaviourBox& box : form_.behaviour_boxes) {
    box.on_change = [this] {
      if (!choosing_) take_switches();
    };
  }
}

// The own choice begins with the switches as they are.
void BehaviourChoice::choose_profile() {
  if (form_.behaviour.chosen() == kOwnChoice) return;
  choosing_ = true;
  for (BehaviourBox& box : form_.behaviour_boxes) {
    box.set_checked(form_.behaviour.chosen() == kOverlayProfile);
  }
  choosing_ = false;
  take_switches();
}

void BehaviourChoice::take_switches() {
  const auto& boxes = form_.behaviour_boxes;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    behaviour_.*kBehaviourSwitches[i].flag = boxes[i].checked();
  }
  const auto on = std::count_if(boxes.begin(), boxes.end(),
                                [](const BehaviourBox& box) { return box.checked(); });
  choosing_ = true;
  form_.behaviour.choose(on == 0                                           ? kClassicProfile
                         : on == static_cast<std::ptrdiff_t>(boxes.size()) ? kOverlayProfile
                                                                           : kOwnChoice);
  choosing_ = false;
  if (on_change) on_change();
}

}  // namespace velmora
