// The switch filter_results, off and on: hits from a neighbour, the rows that a person sees, and
// what a double click on one of them queues.
#include <gmock/gmock.h>

#include "query_hits.h"

namespace velmora::sim {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Rig : public ServentRig {
 public:
  explicit Rig(const Fields& fields) : ServentRig(fields) {
    neighbour = connected_peer("10.0.0.2");
  }

  // Sends the search from that slot; the identifier that it went out with.
  std::string search(int slot, const std::string& words) {
    world.run_for(2000);  // identifiers are told apart by the second
    neighbour->take();
    form().search_num.choose(slot);
    form().Tsearch.enter(words);
    world.run_for(100);
    return neighbour->take().substr(0, 16);
  }
  void hit(int at, const std::vector<HitFile>& files, const std::string& guid = "another's") {
    neighbour->send(query_hit(at, files, guid));
    world.run_for(1500);
  }
  std::vector<std::string> column(std::size_t number) {
    std::vector<std::string> cells;
    for (std::size_t row = 1; row <= form().lfound.rows(); ++row) {
      cells.push_back(form().lfound.cell(row, number));
    }
    return cells;
  }
  std::string total() { return form().totalsearch.text(); }

  std::unique_ptr<RawPeer> neighbour;
};

TEST(FilterResults, LeavesOutWhatLacksAWordOfTheSearchWhileTheBoxIsChecked) {
  const std::vector<HitFile> files = {
      {1, 1, "Blue Song live.mp3"}, {2, 2, "song.mp3"}, {3, 3, "SONGBLUE.ogg"}, {4, 4, "red.mp3"}};
  const std::vector<std::string> all = {"Blue Song live", "song", "SONGBLUE", "red"};
  const struct {
    const char* what;
    ServentRig::Fields fields;
    const char* first;
    const char* second;
    bool answers_second;
    std::vector<std::string> kept;
  } cases[] = {
      {"off", {{"filtersearch", "on"}}, "song blue", "", false, all},
      {"box clear", {{"filter_results_behaviour", "on"}}, "song blue", "", false, all},
      {"no search",
       {{"filter_results_behaviour", "on"}, {"filtersearch", "on"}},
       "",
       "",
       false,
       all},
      {"on",
       {{"filter_results_behaviour", "on"}, {"filtersearch", "on"}},
       "song  BLUE",
       "",
       false,
       {"Blue Song live", "SONGBLUE"}},
      {"an extension is of the name",
       {{"filter_results_behaviour", "on"}, {"filtersearch", "on"}},
       ".ogg",
       "",
       false,
       {"SONGBLUE"}},
      {"any of the searches",
       {{"filter_results_behaviour", "on"}, {"filtersearch", "on"}},
       "song blue",
       "red",
       true,
       {"Blue Song live", "SONGBLUE", "red"}},
      {"the search that is answered",
       {{"filter_results_behaviour", "on"}, {"filtersearch", "on"}, {"relay_behaviour", "on"}},
       "song blue",
       "red",
       true,
       {"red"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Rig rig(c.fields);
    std::string guid = "nobody's";
    if (*c.first != '\0') guid = rig.search(1, c.first);
    if (*c.second != '\0') guid = rig.search(2, c.second);
    rig.hit(3, files, guid);
    EXPECT_EQ(rig.column(1), c.kept);
    EXPECT_EQ(rig.total(), std::to_string(c.kept.size()));
  }
}

TEST(FilterResults, EqualFilesAreOneRowWithTheirSources) {
  Rig rig(ServentRig::Fields{{"filter_results_behaviour", "on"}});
  rig.hit(3, {{1, 10, "a.mp3"}, {2, 10, "b.mp3"}});
  rig.hit(4, {{8, 10, "a.mp3"}, {9, 11, "b.mp3"}, {10, 10, "b.ogg"}, {11, 10, "B.mp3"}});
  rig.hit(4, {{12, 10, "a.mp3"}});  // the same host once more
  rig.hit(5, {{1, 10, "a.mp3"}});
  EXPECT_THAT(rig.column(1), ElementsAre("a", "b", "b", "b", "B"));
  EXPECT_THAT(rig.column(3), ElementsAre("10", "10", "11", "10", "10"));
  EXPECT_EQ(rig.column(4).at(0), "3 sources");
  EXPECT_EQ(rig.form().lfound.cell_tooltip(1, 4), "10.0.0.3:6345\n10.0.0.4:6345\n10.0.0.5:6345");
  EXPECT_EQ(rig.column(4).at(1), "10.0.0.3:6345");

  rig.form().lfound.activate(3);
  EXPECT_EQ(rig.form().ldown.cell(1, 2), "11") << "the row's own result, not the third one";
  EXPECT_EQ(rig.form().ldown.cell(1, 4), "10.0.0.4:6345");

  rig.form().clear_search.click();
  EXPECT_THAT(rig.column(1), IsEmpty());
  rig.hit(5, {{1, 11, "b.mp3"}});
  EXPECT_THAT(rig.column(4), ElementsAre("10.0.0.5:6345"));
}

TEST(FilterResults, IsSwitchedWhileResultsAreShown) {
  Rig rig(ServentRig::Fields{});
  CheckBox& box = rig.form().behaviour_boxes[10];
  ASSERT_EQ(box.name(), "filter_results_behaviour");
  rig.hit(3, {{1, 10, "a.mp3"}});
  rig.hit(4, {{1, 10, "a.mp3"}});
  EXPECT_THAT(rig.column(4), ElementsAre("10.0.0.3:6345", "10.0.0.4:6345"));
  box.click();
  EXPECT_THAT(rig.column(4), ElementsAre("2 sources"));
  EXPECT_EQ(rig.total(), "2");
  box.click();
  EXPECT_THAT(rig.column(4), ElementsAre("10.0.0.3:6345", "10.0.0.4:6345"));
}

TEST(FilterResults, WithWholeFilesADownloadKnowsTheRowsOtherSources) {
  Rig rig({{"filter_results_behaviour", "on"},
           {"whole_files_behaviour", "on"},
           {"max_down", "0"},
           {"down_config", "."}});
  for (int i = 3; i < 40; ++i) rig.hit(i, {{1, 10, "a.mp3"}});
  EXPECT_EQ(rig.column(4).at(0), "37 sources");
  EXPECT_THAT(rig.form().lfound.cell_tooltip(1, 4), HasSubstr("\nand 17 more"));
  rig.form().lfound.activate(1);
  rig.world.run_for(1500);
  EXPECT_EQ(rig.form().ldown.cell(1, 3), "Waiting for its turn (16 sources)");
  EXPECT_EQ(rig.form().ldown.cell(1, 4), "10.0.0.3:6345");
}

}  // namespace
}  // namespace velmora::sim
