#include "transfer/disk_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/error.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::MatchesRegex;

TEST(DiskName, LeavesOrdinaryNamesAlone) {
  for (const std::string& name :
       {"song.mp3"s, "readme."s, "a b & c's (live).tar.gz"s, "Übung.txt"s, "lock.mp3"s, "...x"s,
        "my.download.txt"s, "latin\xE9.mp3"s, std::string(242, 'x') + ".mp3"}) {
    EXPECT_EQ(disk_name(name), name);
  }
}

TEST(DiskName, ChangesEveryNameThatIsNoCleanEntry) {
  const std::string hash = "_[0-9a-f]{8}";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "_" + hash},
      {".", "_" + hash},
      {"..", "_" + hash},
      {"../../etc/passwd.x", "\\.\\._\\.\\._etc_passwd" + hash + "\\.x"},
      {"..\\autoexec.bat", "\\.\\._autoexec" + hash + "\\.bat"},
      {"a\nb\x7F" + "c\0d.mp3"s, "a_b_c_d" + hash + "\\.mp3"},
      {"x\xE2\x80\xAE" + "3pm.exe"s, "x_3pm" + hash + "\\.exe"},
      {"x\xE2\x81\xA6\xE2\x80\x8F\xD8\x9C\xC2\x85.mp3", "x____" + hash + "\\.mp3"},
      {"Settings.TOML", "Settings" + hash + "\\.TOML"},
      {"Velmora_cache.dat", "Velmora_cache" + hash + "\\.dat"},
      {"VelMora_uploads.log", "VelMora_uploads" + hash + "\\.log"},
      {"control.sock", "control" + hash + "\\.sock"},
      {"lock", "lock" + hash},
      {"window.ini", "window" + hash + "\\.ini"},
      {"song.mp3.Download", "song" + hash + "\\.mp3_Download"},
  };
  for (const auto& [name, expected] : cases) {
    EXPECT_THAT(disk_name(name), MatchesRegex(expected)) << testing::PrintToString(name);
  }
}

TEST(DiskName, LongNamesKeepTheirExtensionAndTheirCharactersWhole) {
  const std::string longest = disk_name(std::string(1000, 'x') + ".mp3");
  EXPECT_EQ(longest.size(), kMaxDiskName);
  EXPECT_TRUE(longest.ends_with(".mp3"));

  std::string umlauts;
  for (int i = 0; i < 500; ++i) umlauts += "\xC3\xA4";
  const std::string odd = disk_name("x" + umlauts + ".mp3");
  EXPECT_LE(odd.size(), kMaxDiskName);
  EXPECT_EQ(odd.find("\xC3_"), std::string::npos);
  EXPECT_TRUE(odd.ends_with(".mp3"));

  EXPECT_LE(disk_name("x." + std::string(1000, 'y')).size(), kMaxDiskName);
}

TEST(DiskName, DifferentChangedNamesStayDifferent) {
  const std::string tail(500, 'x');
  std::set<std::string> names;
  for (const std::string& name : {"a/b.mp3"s, "a\\b.mp3"s, "a\tb.mp3"s, "a/b.mp"s, "a" + tail,
                                  "a" + tail + "y", "."s, ".."s, ""s}) {
    names.insert(disk_name(name));
  }
  EXPECT_EQ(names.size(), 9U);
}

TEST(DiskName, PathsNeedAFolder) {
  EXPECT_EQ(path_in("/downloads", "a.mp3"), "/downloads/a.mp3");
  EXPECT_EQ(path_in("/", "a.mp3"), "/a.mp3");
  EXPECT_THROW(path_in("", "a.mp3"), PlatformError);
}

}  // namespace
}  // namespace velmora
