// The frame "Behaviour" of the page "Configuration": the profile and its single switches.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "form/control.h"
#include "platform/behaviour.h"

namespace velmora {

inline constexpr int kClassicProfile = 1;
inline constexpr int kOverlayProfile = 2;
inline constexpr int kOwnChoice = 3;

inline constexpr const char* kLeftOut = "*.download;*.part;*.tmp;Thumbs.db;desktop.ini";

// One box a switch; its control is named "NAME_behaviour".
class BehaviourBox : public CheckBox {
 public:
  BehaviourBox(ControlRegistry& form, const BehaviourSwitch& of)
      : CheckBox(form, std::string(of.name) + "_behaviour", Page::configuration, of.caption,
                 std::string(of.changes) + "\nServents that run Classic: " + of.to_peers) {}
};

struct BehaviourFrame {
  explicit BehaviourFrame(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;

 public:
  OptionGroup behaviour{
      form_,
      "behaviour",
      Page::configuration,
      "Behaviour",
      "Classic: the servent as it always was. Overlay: for a network of one's own. "
      "Own choice: each switch by itself.",
      {"Classic", "Overlay", "Own choice"},
      kClassicProfile,
      kClassicProfile};
  TextField exclude_config{
      form_,
      "exclude_config",
      Page::configuration,
      "Large library leaves out",
      "With Large library, files and folders with such a name are not shared. * stands for any "
      "characters, ? for one; \";\" stands between two names. Without it this changes nothing.",
      kLeftOut};
  // In the order of kBehaviourSwitches.
  std::array<BehaviourBox, kBehaviourSwitches.size()> behaviour_boxes{
      boxes(std::make_index_sequence<kBehaviourSwitches.size()>{})};

 private:
  template <std::size_t... I>
  std::array<BehaviourBox, kBehaviourSwitches.size()> boxes(std::index_sequence<I...>) {
    return {BehaviourBox(form_, kBehaviourSwitches[I])...};
  }
};

}  // namespace velmora
