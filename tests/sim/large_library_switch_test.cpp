// The switch large_library, on and off: what a scan finds, when it is done by itself, and what it
// keeps. A servent is driven through its form; the disk tells of changes by the test's script.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "protocol/payloads.h"
#include "servent_rig.h"
#include "share/library_scan.h"
#include "share/library_watch.h"
#include "share/shared_list_file.h"
#include "share_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

struct LibraryRig : ServentRig {
  explicit LibraryRig(bool on, const std::vector<std::string>& files, Fields fields = {})
      : ServentRig(with(on, std::move(fields)), 1, [&](SimHost& machine) {
          machine.files().make_folder("/music");
          for (const std::string& file : files) machine.files().put(file, file);
          return machine.platform();
        }) {
    form().upload_config.enter("/music");
  }
  static Fields with(bool on, Fields fields) {
    fields.emplace_back("large_library_behaviour", on ? "on" : "off");
    return fields;
  }
  void scan() {
    form().scan_config.click();
    wait_for_scan();
  }
  void wait_for_scan() {
    ASSERT_TRUE(world.run_until([&] { return !form().scan_progress.running(); }, 1000));
  }
  // When the next scan begins, in ms from now on; -1 if none does in two minutes.
  std::int64_t next_scan() {
    const std::int64_t from = world.now_ms();
    if (!world.run_until([&] { return form().scan_progress.running(); }, 120'000)) return -1;
    const std::int64_t began = world.now_ms() - from;
    wait_for_scan();
    return began;
  }
  // "path of the file on disk", by file number.
  std::vector<std::string> shared() {
    OneBased<SharedFile> list;
    std::int64_t total = 0;
    read_shared_list(host.files().content(kSharedListFile), list, total);
    std::vector<std::string> paths;
    for (const SharedFile& file : list) paths.push_back(path_on_disk(file));
    return paths;
  }
};

const std::vector<std::string> kTree = {"/music/a.ogg",           "/music/live/b.ogg",
                                        "/music/live/1999/c.ogg", "/music/live/d.ogg.part",
                                        "/music/Thumbs.DB",       "/music/.hidden",
                                        "/music/.trash/e.ogg",    "/music/live/f.OGG.download"};

TEST(LargeLibrarySwitch, OnTheFoldersBelowAreShared) {
  LibraryRig rig(true, kTree);
  rig.form().upload_config.enter("/music/live/");  // reached twice, shared once
  rig.scan();
  EXPECT_THAT(rig.shared(),
              ElementsAre("/music/a.ogg", "/music/live/b.ogg", "/music/live/1999/c.ogg"));
  EXPECT_EQ(rig.form().sharenum_config.text(), "3");
  EXPECT_EQ(rig.form().sharesize_config.text(), "51");
  EXPECT_EQ(rig.logged("Shared folders"), 0);

  rig.form().exclude_config.set_text("live; *.txt");
  rig.scan();
  EXPECT_THAT(rig.shared(),
              UnorderedElementsAre("/music/a.ogg", "/music/Thumbs.DB", "/music/live/b.ogg",
                                   "/music/live/1999/c.ogg", "/music/live/d.ogg.part",
                                   "/music/live/f.OGG.download"))
      << "the folder is left out where it was found, not where the user names it";
}

TEST(LargeLibrarySwitch, OnThereAreMoreThan99Files) {
  std::vector<std::string> files;
  for (int i = 0; i < 250; ++i)
    files.push_back("/music/" + std::to_string(i / 50) + "/" + std::to_string(i));
  for (const bool on : {true, false}) {
    LibraryRig rig(on, files);
    rig.form().upload_config.press_delete(1);
    for (int i = 0; i < 5; ++i) rig.form().upload_config.enter("/music/" + std::to_string(i));
    rig.scan();
    EXPECT_EQ(rig.form().sharenum_config.text(), on ? "250" : "100");
    EXPECT_EQ(rig.host.folders().watched().empty(), !on);
    EXPECT_EQ(rig.logged("Scan_my_files: Subscript out of range"), on ? 0 : 1);
  }
}

TEST(LargeLibrarySwitch, AFileInAFolderBelowIsFoundAndFetched) {
  LibraryRig rig(true, kTree);
  rig.scan();
  auto client = rig.world.connect_raw("10.0.0.2", "10.0.0.1", 6345);
  client->send("GET /get/3/c.ogg HTTP:/1.0\r\n\r\n");
  rig.world.run_for(1500);
  EXPECT_THAT(client->received(), testing::EndsWith("\r\n\r\n/music/live/1999/c.ogg"));
  auto neighbour = rig.connected_peer("10.0.0.2");
  neighbour->send(descriptor("0123456789abcdef", 128, 1, 0, std::string("\0\0c.ogg\0", 8)));
  rig.world.run_for(500);
  EXPECT_THAT(neighbour->received(), HasSubstr(std::string("c.ogg\0\0", 7)));
}

TEST(LargeLibrarySwitch, ChangesAreScannedWhenTheyAreOver) {
  LibraryRig rig(true, kTree);
  EXPECT_EQ(rig.next_scan(), kLibraryQuietMs) << "of its own accord, from the start-up on";
  EXPECT_EQ(rig.shared().size(), 3U);
  EXPECT_THAT(rig.host.folders().watched(),
              ElementsAre("/music", "/music/live", "/music/live/1999"));
  EXPECT_EQ(rig.next_scan(), -1);

  rig.host.files().put("/music/live/new/g.ogg", "g");
  rig.host.folders().change("/music/live", "new");
  rig.world.run_for(1500);
  rig.host.folders().change("/music", "g.ogg");
  EXPECT_EQ(rig.form().sharenum_config.text(), "3");
  EXPECT_EQ(rig.next_scan(), kLibraryQuietMs);
  EXPECT_EQ(rig.shared().back(), "/music/live/new/g.ogg");
  EXPECT_TRUE(rig.host.folders().watched().contains("/music/live/new"));

  const std::int64_t since = rig.world.now_ms();
  rig.world.run_for(10'000);
  rig.host.folders().change("/music/live/new", "h.ogg");
  const std::int64_t next = rig.next_scan();
  EXPECT_NEAR(static_cast<double>(10'000 + next), kLibraryScanMs, 100)
      << "from the last, " << since;

  // Neither hidden files nor those that are left out anyway; but what is not known counts.
  for (const char* name : {".velmora-abc", "song.part", "Thumbs.db"}) {
    rig.host.folders().change("/music", name);
  }
  rig.host.folders().change("/elsewhere", "x");
  EXPECT_EQ(rig.next_scan(), -1);
  rig.host.folders().change("/music", "");
  EXPECT_EQ(rig.next_scan(), kLibraryQuietMs);
}

TEST(LargeLibrarySwitch, AScanByItselfLeavesTheCountToBeSeen) {
  LibraryRig rig(true, kTree);
  rig.scan();
  rig.world.run_for(kLibraryScanMs);
  rig.host.folders().change("/music", "x");
  ASSERT_TRUE(rig.world.run_until([&] { return rig.form().scan_progress.running(); }, 3000));
  EXPECT_EQ(rig.form().sharenum_config.text(), "3");
  // A person need not wait for it.
  rig.form().upload_config.press_delete(1);
  rig.form().scan_config.click();
  EXPECT_EQ(rig.form().sharenum_config.text(), "--");
  EXPECT_FALSE(rig.form().scan_config.enabled());
  rig.wait_for_scan();
  EXPECT_EQ(rig.form().sharenum_config.text(), "0");
  EXPECT_TRUE(rig.form().scan_config.enabled());
}

TEST(LargeLibrarySwitch, FilesThatStayKeepTheirNumbers) {
  LibraryRig rig(true, {"/music/a", "/music/b", "/music/c", "/music/d"});
  rig.scan();
  rig.host.files().remove("/music/b");
  rig.host.files().put("/music/e", "e");
  rig.host.files().put("/music/f", "f");
  rig.scan();
  EXPECT_THAT(rig.shared(),
              ElementsAre("/music/a", "/music/e", "/music/c", "/music/d", "/music/f"));
  rig.host.files().remove("/music/a");
  rig.host.files().remove("/music/e");
  rig.scan();
  EXPECT_THAT(rig.shared(), ElementsAre("/music/d", "/music/f", "/music/c"));
}

TEST(LargeLibrarySwitch, OffItWatchesNothingAndScansAsEver) {
  LibraryRig rig(true, kTree);
  rig.scan();
  rig.host.folders().change("/music", "x");
  rig.form().behaviour.choose(kClassicProfile);
  EXPECT_TRUE(rig.host.folders().watched().empty());
  EXPECT_EQ(rig.next_scan(), -1);
  EXPECT_EQ(rig.form().sharenum_config.text(), "3") << "until the button is pressed";
  rig.scan();
  EXPECT_THAT(rig.shared(), ElementsAre("/music/a.ogg", "/music/Thumbs.DB"));
  rig.form().behaviour.choose(kOverlayProfile);
  EXPECT_EQ(rig.next_scan(), kLibraryQuietMs);
  EXPECT_EQ(rig.shared().size(), 3U);
}

TEST(LargeLibrarySwitch, TurnedOffItGivesUpAScanThatBeganByItself) {
  for (const bool by_itself : {true, false}) {
    LibraryRig rig(true, kTree);
    rig.scan();
    rig.world.run_for(kLibraryScanMs);
    rig.host.files().put("/music/live/new.ogg", "n");
    if (by_itself) {
      rig.host.folders().change("/music/live", "new.ogg");
      ASSERT_TRUE(rig.world.run_until([&] { return rig.form().scan_progress.running(); }, 3000));
    } else {
      rig.form().scan_config.click();
    }
    rig.form().behaviour.choose(kClassicProfile);
    rig.wait_for_scan();
    EXPECT_EQ(rig.form().sharenum_config.text(), by_itself ? "3" : "4");
    EXPECT_EQ(rig.shared().size(), by_itself ? 3U : 4U);
    EXPECT_TRUE(rig.form().scan_config.enabled());
    EXPECT_TRUE(rig.host.folders().watched().empty());
    EXPECT_EQ(rig.next_scan(), -1);
  }
}

// The profile's folder may itself lie below a shared one.
TEST(LargeLibrarySwitch, TheListThatAScanSavesCausesNoScan) {
  LibraryRig rig(true, kTree);
  rig.scan();
  rig.host.folders().change("/music/live", ".velmora-list");
  rig.host.folders().change("/music/live", kSharedListFile);
  EXPECT_EQ(rig.next_scan(), -1);
  rig.host.folders().change("/music/live", std::string("My ") + kSharedListFile);
  EXPECT_EQ(rig.next_scan(), kLibraryQuietMs);
}

TEST(LargeLibrarySwitch, ALibraryWithoutDirectoriesIsLeftAlone) {
  LibraryRig rig(true, {});
  rig.form().upload_config.press_delete(1);
  EXPECT_EQ(rig.next_scan(), -1);
  EXPECT_FALSE(rig.host.files().exists(kSharedListFile));
}

TEST(LargeLibrarySwitch, FoldersThatCannotBeWatchedAreSharedAllTheSame) {
  LibraryRig rig(true, kTree);
  rig.host.folders().set_most(1);
  rig.scan();
  EXPECT_EQ(rig.shared().size(), 3U);
  EXPECT_EQ(rig.logged("Shared folders: changes in /music/live are not noticed: No space left"), 1);
  EXPECT_THAT(rig.host.folders().watched(), ElementsAre("/music"));
}

TEST(LargeLibrarySwitch, ATotalBeyond32BitsIsShownAndToldAsFarAsItFits) {
  for (const bool on : {true, false}) {
    LibraryRig rig(on, {});
    rig.form().sharesize_config.set_text("5,000,000,001");
    auto peer = rig.connected_peer("10.0.0.2");
    peer->send(descriptor("0123456789abcdef", 0, 1, 0, ""));
    rig.world.run_for(100);
    const std::string pong = peer->received();
    ASSERT_EQ(pong.size(), on ? 37U : 0U);
    if (on) {
      EXPECT_EQ(pong.substr(33), std::string("\x80\xFF\xFF\x7F", 4));
    }
  }
}

TEST(LargeLibrarySwitch, WhatIsLeftOutIsKeptInTheSettings) {
  const auto stored = [](const std::string& patterns) {
    LibraryRig rig(true, {});
    rig.form().exclude_config.set_text(patterns);
    rig.servent->save();
    return rig.host.files().content("settings.toml");
  };
  EXPECT_THAT(stored(kLeftOut), testing::Not(HasSubstr("left_out")));
  const std::string settings = stored("*.bak");
  EXPECT_THAT(settings, HasSubstr("left_out = \"*.bak\""));
  ServentRig again({}, 1, [&](SimHost& host) {
    host.files().put("settings.toml", settings);
    return host.platform();
  });
  EXPECT_EQ(again.form().exclude_config.text(), "*.bak");
}

// Scans of disks that are large, broken or odd, without a servent around them.
struct LibraryScanTest : testing::Test, ShareRig {
  struct Disk : SimFiles {
    std::uint64_t size(const std::string& path) override {
      const auto given = sizes.find(path);
      return given == sizes.end() ? SimFiles::size(path) : given->second;
    }
    std::unique_ptr<DirectoryListing> list(const std::string& folder) override {
      if (folder == locked) throw PlatformError::from_errno(EACCES);
      return SimFiles::list(folder);
    }
    std::map<std::string, std::uint64_t> sizes;
    std::string locked;
  };

  OneBased<SharedFile> scan(const std::vector<std::string>& directories = {"/d"}) {
    folders.clear();
    LibraryScan scan(directories, NamePatterns(""), disk, index, *this,
                     [this](const std::string& folder) { folders.push_back(folder); });
    while (scan.Scan_my_files()) {
    }
    EXPECT_EQ(scan.directories_done(), directories.size());
    total = scan.total_text();
    return scan.take_files();
  }

  Disk disk;
  std::vector<std::string> folders;
  std::string total;
};

TEST_F(LibraryScanTest, CountsSizesExactlyAndLeavesOutWhatDoesNotFitIntoAnAnswer) {
  for (int i = 0; i < 4; ++i) disk.put("/d/" + std::to_string(i), "");
  disk.sizes = {{"/d/0", kMaxSharedFileSize},
                {"/d/1", kMaxSharedFileSize - 1},
                {"/d/2", kMaxSharedFileSize + 1},
                {"/d/3", std::uint64_t{1} << 40}};
  const auto files = scan();
  EXPECT_EQ(files.upper_bound(), 2U);
  EXPECT_EQ(total, "4294967039");
  EXPECT_THAT(log, ElementsAre("Shared folders: /d/2: left out, it is larger than 2 GiB",
                               "Shared folders: /d/3: left out, it is larger than 2 GiB"));
  QueryHit hit;
  hit.hits = 1;
  hit.address = "10.0.0.1";
  hit.results = {{1, static_cast<float>(files.at(1).size), "x"}};
  log.clear();
  query_reply_to_str(hit, *this);
  EXPECT_TRUE(log.empty()) << "the largest size still goes into an answer";
}

TEST_F(LibraryScanTest, GoesOnWhereAFolderCannotBeRead) {
  disk.put("/d/a", "a");
  disk.put("/d/locked/b", "b");
  disk.put("/d/open/c", "c");
  disk.locked = "/d/locked";
  EXPECT_EQ(scan({"/missing", "/d"}).upper_bound(), 2U);
  EXPECT_EQ(total, "2");
  EXPECT_THAT(log, ElementsAre("Shared folders: /missing: No such file or directory",
                               "Shared folders: /d/locked: Permission denied"));
}

TEST_F(LibraryScanTest, WritesSoManyLinesAndNoMore) {
  std::vector<std::string> missing;
  for (int i = 0; i < 25; ++i) missing.push_back("/m" + std::to_string(i));
  EXPECT_EQ(scan(missing).upper_bound(), 0U);
  EXPECT_EQ(log.size(), kMaxScanLines + 1);
  EXPECT_EQ(log.back(), "Shared folders: and 15 lines more");
}

TEST_F(LibraryScanTest, KeepsItsBounds) {
  std::string deep = "/d";
  for (std::size_t i = 0; i < kMaxLibraryDepth + 3; ++i) {
    deep += "/x";
    disk.put(deep + "/file", "");
  }
  EXPECT_EQ(scan().upper_bound(), kMaxLibraryDepth);
  ASSERT_EQ(log.size(), 1U);
  EXPECT_THAT(log[0], HasSubstr("left out, it lies more than 32 folders deep"));
  log.clear();

  std::vector<std::string> many;
  for (std::size_t i = 0; i < kMaxLibraryFolders + 1; ++i) {
    many.push_back("/e" + std::to_string(i));
    disk.make_folder(many.back());
  }
  scan(many);
  EXPECT_EQ(folders.size(), kMaxLibraryFolders);
  EXPECT_THAT(log, ElementsAre("Shared folders: /e10000: left out, there are more than 10000 "
                               "folders"));
}

}  // namespace
}  // namespace velmora::sim
