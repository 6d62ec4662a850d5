// The frame "Behaviour": profiles, switches, and their way through the settings.
#include <gtest/gtest.h>

#include "servent_rig.h"

namespace velmora::sim {
namespace {

int switches_on(ServentRig& rig) {
  int count = 0;
  for (const BehaviourBox& box : rig.form().behaviour_boxes) count += box.checked() ? 1 : 0;
  return count;
}

TEST(BehaviourChoice, AProfileSetsItsSwitchesAndTheSwitchesShowTheirProfile) {
  ServentRig rig;
  Form& form = rig.form();
  EXPECT_EQ(form.behaviour.chosen(), kClassicProfile);
  EXPECT_EQ(switches_on(rig), 0);

  form.behaviour.choose(kOverlayProfile);
  EXPECT_EQ(switches_on(rig), 12);
  form.behaviour_boxes[2].click();
  EXPECT_EQ(form.behaviour.chosen(), kOwnChoice);
  EXPECT_EQ(switches_on(rig), 11);
  form.behaviour.choose(kOwnChoice);
  EXPECT_EQ(switches_on(rig), 11) << "the own choice begins with what is there";
  form.behaviour_boxes[2].click();
  EXPECT_EQ(form.behaviour.chosen(), kOverlayProfile);
  form.behaviour.choose(kClassicProfile);
  EXPECT_EQ(switches_on(rig), 0);
}

TEST(BehaviourChoice, TheChoiceIsKeptInTheSettings) {
  const struct {
    const char* stored;
    int profile;
    int on;
  } cases[] = {
      {"", kClassicProfile, 0},
      {"[behaviour]\nprofile = \"Overlay\"\n", kOverlayProfile, 12},
      {"[behaviour]\nprofile = \"Overlay\"\nrelay = \"0\"\n", kOverlayProfile, 12},
      {"[behaviour]\nprofile = \"Classic\"\nrelay = \"1\"\n", kClassicProfile, 0},
      {"[behaviour]\nrelay = \"1\"\npush = true\n", kOwnChoice, 2},
      {"[behaviour]\nprofile = \"Own choice\"\nrelay = \"1\"\n", kOwnChoice, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.stored);
    const auto with_settings = [&](SimHost& host) {
      if (*c.stored != '\0') host.files().put("settings.toml", c.stored);
      return host.platform();
    };
    ServentRig rig({}, 1, with_settings);
    EXPECT_EQ(rig.form().behaviour.chosen(), c.profile);
    EXPECT_EQ(switches_on(rig), c.on);
    rig.servent->save();
    const std::string saved = rig.host.files().content("settings.toml");
    ServentRig again({}, 1, [&](SimHost& host) {
      host.files().put("settings.toml", saved);
      return host.platform();
    });
    EXPECT_EQ(again.form().behaviour.chosen(), c.profile);
    EXPECT_EQ(switches_on(again), c.on);
  }
}

TEST(BehaviourChoice, AFieldOfTheCommandLineTakesTheProfilesName) {
  ServentRig rig({{"behaviour", "overlay"}, {"push_behaviour", "off"}});
  EXPECT_EQ(switches_on(rig), 11);
  EXPECT_EQ(rig.form().behaviour.chosen(), kOwnChoice);
}

}  // namespace
}  // namespace velmora::sim
