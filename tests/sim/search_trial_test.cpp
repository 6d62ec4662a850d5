// Overlays of 200 servents, Classic and Overlay side by side: what one does must not hurt the
// other.
#include "simulator/search_trial.h"

#include <gtest/gtest.h>

namespace velmora::simulator {
namespace {

TrialOptions of(std::size_t overlay) {
  TrialOptions options;
  options.searches = 24;
  options.overlay = overlay;
  return options;
}

TEST(SearchTrial, MixedOverlaysNeitherStormNorMisreadEachOther) {
  const TrialResult classic = run_search_trial(of(0));
  const std::size_t connections = 200 * 4 / 2;
  double most = classic.messages;
  for (const std::size_t overlay : {0U, 50U, 100U, 150U, 200U}) {
    SCOPED_TRACE(overlay);
    const TrialResult mixed = run_search_trial(of(overlay));
    EXPECT_EQ(mixed.connections, connections) << "none was given up";
    EXPECT_EQ(mixed.misread, 0U);
    EXPECT_LE(mixed.messages, most) << "every servent that relays spares some";
    most = mixed.messages;
  }
}

TEST(SearchTrial, OverlayFindsWhatClassicCannotReach) {
  const TrialResult classic = run_search_trial(of(0));
  const TrialResult overlay = run_search_trial(of(200));
  EXPECT_LE(classic.found, 2U);
  EXPECT_EQ(overlay.found, overlay.searches);
  EXPECT_EQ(overlay.wrong, 0U);
  // Each connection carries a search twice at most, and the way back is as short as the way there.
  EXPECT_LT(overlay.messages, 2.0 * 400 + 7);
}

}  // namespace
}  // namespace velmora::simulator
