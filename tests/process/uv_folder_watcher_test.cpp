#include "platform/uv/uv_folder_watcher.h"

#include <gmock/gmock.h>

#include <fstream>

#include "uv_rig.h"

namespace velmora::uv {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class UvFolderWatcherTest : public testing::Test, public FolderWatchEvents {
 protected:
  void on_folder_changed(std::string_view entry) override {
    changes.emplace_back(entry);
    if (ends_at_first) watch.reset();
  }
  // What is told of this action; an entry made after it shows that nothing else comes.
  std::vector<std::string> told_of(const std::function<void()>& action) {
    changes.clear();
    action();
    fs::create_directory(folder.path("mark"));
    EXPECT_TRUE(run_until(loop, [&] { return !changes.empty() && changes.back() == "mark"; }));
    fs::remove(folder.path("mark"));
    std::vector<std::string> before_mark = changes;
    before_mark.pop_back();
    EXPECT_TRUE(run_until(loop, [&] { return changes.size() > before_mark.size() + 1; }));
    return before_mark;
  }
  void put(const std::string& name) const { std::ofstream(folder.path(name)) << "content"; }

  TemporaryFolder folder;
  UvLoop loop;
  UvFolderWatcher watcher{loop, folder.path()};
  std::vector<std::string> changes;
  bool ends_at_first = false;
  std::unique_ptr<FolderWatch> watch = watcher.make_watch(*this);
};

TEST_F(UvFolderWatcherTest, TellsWhatComesGoesAndIsWritten) {
  fs::create_directories(folder.path("sub/deep"));
  put("old");
  watch->add(".");
  watch->add(folder.path("sub"));
  watch->add("sub");
  EXPECT_THAT(told_of([&] { put("new"); }), ElementsAre("new", "new")) << "made, then written";
  EXPECT_THAT(told_of([&] { put("old"); }), ElementsAre("old"));
  EXPECT_THAT(told_of([&] { fs::remove(folder.path("old")); }), ElementsAre("old"));
  EXPECT_THAT(told_of([&] { fs::rename(folder.path("new"), folder.path("sub/x")); }),
              ElementsAre("new", "x"));
  EXPECT_THAT(told_of([&] { std::ifstream(folder.path("sub/x")).get(); }), ElementsAre());
  EXPECT_THAT(told_of([&] { put("sub/deep/y"); }), ElementsAre()) << "not watched with its parent";
  EXPECT_THAT(told_of([&] { fs::remove_all(folder.path("sub/deep")); }), ElementsAre("deep"));
}

TEST_F(UvFolderWatcherTest, RefusesWhatIsNoFolder) {
  put("file");
  EXPECT_EQ(code_of([&] { watch->add("missing"); }), Errc::path_not_found);
  EXPECT_EQ(code_of([&] { watch->add("file"); }), Errc::system);
  EXPECT_EQ(code_of([&] { watch->add(std::string("a\0b", 3)); }), Errc::bad_file_name);
}

TEST_F(UvFolderWatcherTest, MayBeEndedByWhoHearsOfAChange) {
  watch->add(".");
  ends_at_first = true;
  put("a");
  put("b");
  EXPECT_TRUE(run_until(loop, [&] { return !changes.empty(); }));
  run_turns(loop, 10);
  EXPECT_THAT(changes, ElementsAre("a"));
}

}  // namespace
}  // namespace velmora::uv
