// The choice of the frame "Behaviour": a profile sets all switches, a switch set by itself shows
// which profile the switches make. It writes the servent's record (not owned) whenever one moves.
#pragma once

#include <functional>
#include <vector>

#include "form/form.h"
#include "platform/behaviour.h"

namespace velmora {

class BehaviourChoice {
 public:
  BehaviourChoice(Form& form, Behaviour& behaviour);
  BehaviourChoice(const BehaviourChoice&) = delete;
  BehaviourChoice& operator=(const BehaviourChoice&) = delete;

  // Runs after the record has changed, for what does more than look at its flag when it needs it.
  std::function<void()> on_change;

 private:
  void choose_profile();
  void take_switches();

  Form& form_;
  Behaviour& behaviour_;
  bool choosing_ = false;  // the boxes move by the profile, or the profile by the boxes
};

}  // namespace velmora
