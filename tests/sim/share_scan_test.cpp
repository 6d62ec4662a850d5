#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "share/shared_list_file.h"
#include "share/shared_scan.h"
#include "share_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;

struct ShareScanTest : testing::Test, ShareRig {
  void scan_all() {
    form.scan_config.click();
    ASSERT_TRUE(world.run_until([this] { return !scan.scanning(); }, 1000));
  }
  void put_files(const std::string& folder, int count) {
    for (int i = 1; i <= count; ++i) {
      host.files().put(folder + "/file" + std::to_string(i), std::string(20, 'x'));
    }
  }
  std::string saved() { return host.files().content(kSharedListFile); }

  SharedScan scan{host.platform(), form, index, *this};
};

TEST_F(ShareScanTest, RecordsTheFilesOfEveryDirectory) {
  const std::string audio = std::string("\xFF\xFB\x90\x00", 4) + std::string(1200, 'a');
  host.files().put("/music/song.MP3", audio);
  host.files().put("/music/deep/hidden.txt", "not scanned");
  host.files().put("/docs/xmp3", "no frame here");
  host.files().make_folder("/none");
  for (const char* directory : {"/music/", "/none", "/docs"}) form.upload_config.enter(directory);
  EXPECT_EQ(form.upload_config.text(), "");

  scan_all();
  ASSERT_EQ(index.shared_files().upper_bound(), 2U);
  const SharedFile& song = index.shared_files().at(1);
  EXPECT_EQ(song.name, "song.MP3\00144100\001128000");
  EXPECT_EQ(song.path, "/music");
  EXPECT_EQ(song.size, 1204);
  EXPECT_EQ(song.uploads, 0);
  EXPECT_EQ(index.shared_files().at(2).name, "xmp3\001\001");
  EXPECT_EQ(form.sharenum_config.text(), "2");
  EXPECT_EQ(form.sharesize_config.text(), "1,217");
  EXPECT_EQ(saved(), shared_list_text(index.shared_files()));
  ASSERT_EQ(log.size(), 1U);
  EXPECT_EQ(log.front().substr(0, 14), "Get_mp3_info: ");

  form.upload_config.press_delete(1);
  EXPECT_THAT(form.upload_config.items(), ElementsAre("/none", "/docs"));
  form.upload_config.enter("");
  EXPECT_EQ(form.upload_config.items().size(), 2U);
}

TEST_F(ShareScanTest, KeepsTheOldListUntilTheNewOneIsWholeAndWorksInManyTurns) {
  put_files("/old", 3);
  form.upload_config.enter("/old");
  scan_all();
  form.upload_config.press_delete(1);
  put_files("/new", 60);
  form.upload_config.enter("/new");

  int turns = 0;
  std::map<std::string, int> shown;
  std::function<void()> watch = [&] {
    if (!scan.scanning()) return;
    ++turns;
    ++shown[form.sharenum_config.text()];
    ++shown[form.scan_progress.text()];
    EXPECT_EQ(form.scan_progress.done(), 0U);
    EXPECT_EQ(form.scan_progress.total(), 1U);
    EXPECT_EQ(index.shared_files().upper_bound(), 3U);
    EXPECT_FALSE(form.scan_config.enabled());
    form.scan_config.click();
    host.platform().loop.post(watch);
  };
  form.scan_config.click();
  watch();
  ASSERT_TRUE(world.run_until([this] { return !scan.scanning(); }, 1000));
  EXPECT_GE(turns, 8);
  EXPECT_EQ(shown["--"], turns);
  EXPECT_EQ(shown["0 files"], 1);
  EXPECT_EQ(shown["7 files, /new"], 1);
  EXPECT_FALSE(form.scan_progress.running());
  EXPECT_EQ(form.sharenum_config.text(), "60");
  EXPECT_TRUE(form.scan_config.enabled());
}

struct Bound {
  int files;
  std::string number;
  std::string size;
  std::vector<std::string> log;
};

TEST_F(ShareScanTest, EndsWithAnErrorAtTheHundredthFile) {
  const std::string error = "Scan_my_files: Subscript out of range";
  const Bound bounds[] = {{0, "0", "0", {}},
                          {99, "99", "1,980", {}},
                          {100, "100", "0", {error}},
                          {130, "100", "0", {error}}};
  for (const Bound& bound : bounds) {
    const std::string folder = "/shared" + std::to_string(bound.files);
    host.files().make_folder(folder);
    put_files(folder, bound.files);
    form.upload_config.clear();
    form.upload_config.enter(folder);
    log.clear();
    scan_all();
    EXPECT_EQ(form.sharenum_config.text(), bound.number);
    EXPECT_EQ(form.sharesize_config.text(), bound.size);
    EXPECT_EQ(log, bound.log);
    EXPECT_EQ(std::to_string(index.shared_files().upper_bound()), bound.number);
    EXPECT_EQ(saved(), shared_list_text(index.shared_files()));
    if (bound.files >= 100) {
      EXPECT_EQ(index.shared_files().at(100).size, 20);
    }
  }
}

TEST_F(ShareScanTest, KeepsWhatItHadWhenADirectoryCannotBeListed) {
  put_files("/a", 3);
  put_files("/c", 3);
  for (const char* directory : {"/a", "/b", "/c"}) form.upload_config.enter(directory);
  scan_all();
  EXPECT_THAT(log, ElementsAre("Scan_my_files: No such file or directory"));
  EXPECT_EQ(form.sharenum_config.text(), "100");
  EXPECT_EQ(form.sharesize_config.text(), "0");
  EXPECT_EQ(index.shared_files().at(3).path, "/a");
  EXPECT_EQ(index.shared_files().at(4).name, "");
}

// Files of which only the sizes are large.
class LargeFiles : public SimFiles {
 public:
  std::uint64_t size(const std::string& path) override { return sizes.at(path); }
  std::map<std::string, std::uint64_t> sizes;
};

TEST(SharedFileScan, OverflowsBeyondASigned32BitTotal) {
  struct Sizes {
    std::uint64_t first;
    std::uint64_t second;
    std::string total;
  };
  const Sizes cases[] = {{2147483646, 1, "2147483647"}, {2147483647, 1, ""}, {2147483648, 0, ""}};
  for (const Sizes& c : cases) {
    ShareRig rig;
    LargeFiles files;
    files.put("/d/1", "");
    files.put("/d/2", "");
    files.sizes = {{"/d/1", c.first}, {"/d/2", c.second}};
    SharedFileScan scan({"/d"}, files, rig);
    while (scan.Scan_my_files()) {
    }
    EXPECT_EQ(scan.total_text(), c.total);
    EXPECT_EQ(rig.log.empty() ? "" : rig.log.front(),
              c.total.empty() ? "Scan_my_files: Overflow" : "");
  }
}

TEST_F(ShareScanTest, ShowsWhatSavingAndLoadingSay) {
  EXPECT_EQ(scan.load_saved(), "load_shared: No such file or directory");
  EXPECT_EQ(form.StatusBar.panel(1), "load_shared: No such file or directory");
  EXPECT_EQ(form.sharesize_config.text(), "0");

  put_files("/a", 1);
  form.upload_config.enter("/a");
  host.files().set_capacity(30);
  scan_all();
  EXPECT_EQ(form.StatusBar.panel(1), "save_shared: No space left on device");
  EXPECT_EQ(form.sharenum_config.text(), "1");

  host.files().set_capacity(1000000);
  scan_all();
  index.replace(OneBased<SharedFile>());
  EXPECT_EQ(scan.load_saved(), "");
  EXPECT_EQ(index.shared_files().upper_bound(), 1U);
  EXPECT_EQ(form.sharesize_config.text(), "20");
}

TEST_F(ShareScanTest, CanBeGivenUp) {
  share({SharedFile{}});
  put_files("/a", 50);
  form.upload_config.enter("/a");
  form.scan_config.click();
  scan.stop();
  world.run_for(1000);
  EXPECT_EQ(index.shared_files().upper_bound(), 1U);
  EXPECT_EQ(form.sharenum_config.text(), "1");
  EXPECT_TRUE(form.scan_config.enabled());
  EXPECT_FALSE(host.files().exists(kSharedListFile));
}

}  // namespace
}  // namespace velmora::sim
