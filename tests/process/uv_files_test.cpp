#include "platform/uv/uv_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "platform/uv/console_screen.h"
#include "platform/uv/uv_platform.h"
#include "uv_rig.h"

namespace velmora::uv {
namespace {

namespace fs = std::filesystem;
using testing::UnorderedElementsAre;

class UvFilesTest : public testing::Test {
 protected:
  UvFilesTest() {
    fs::create_directory(folder.path("sub"));
    std::ofstream(folder.path("plain")) << "content";
    fs::create_symlink("plain", folder.path("link"));
    fs::create_symlink("nowhere", folder.path("dangling"));
    mkfifo(folder.path("fifo").c_str(), 0600);
  }
  [[nodiscard]] std::vector<std::string> names(const std::string& below = "") const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder.path(below))) {
      found.push_back(entry.path().filename());
    }
    return found;
  }
  mode_t mode(const std::string& name) const {
    struct stat status {};
    lstat(folder.path(name).c_str(), &status);
    return status.st_mode & 07777U;
  }

  TemporaryFolder folder;
  UvFiles files{folder.path()};
};

TEST_F(UvFilesTest, OnlyRegularFilesAreOpened) {
  const std::string nul("plain\0", 6);
  struct Case {
    std::string path;
    Errc code;
  };
  for (const Case& bad :
       {Case{"fifo", Errc::system}, Case{"link", Errc::system}, Case{"dangling", Errc::system},
        Case{"sub", Errc::system}, Case{"/dev/null", Errc::system}, Case{"plain/x", Errc::system},
        Case{"missing", Errc::path_not_found}, Case{"", Errc::path_not_found},
        Case{nul, Errc::bad_file_name}}) {
    const std::function<void()> calls[] = {[&] { files.open_for_reading(bad.path); },
                                           [&] { files.read_whole(bad.path, 100); },
                                           [&] { files.size(bad.path); }};
    for (const auto& call : calls) EXPECT_EQ(code_of(call), bad.code) << bad.path;
  }
  for (const char* refused : {"fifo", "link", "dangling", "sub"}) {
    EXPECT_EQ(code_of([&] { files.append(refused, "x"); }), Errc::system) << refused;
    EXPECT_EQ(code_of([&] { files.save(refused, "x"); }), Errc::system) << refused;
    EXPECT_EQ(code_of([&] { files.open_partial(".", refused); }), Errc::system) << refused;
    EXPECT_EQ(code_of([&] { files.finish_partial(".", refused, "to"); }), Errc::system) << refused;
  }
  EXPECT_EQ(error_of([&] { files.read_whole("fifo", 100); }), "Not a regular file");
  EXPECT_EQ(error_of([&] { files.save("sub", "x"); }), "Is a directory");
  EXPECT_EQ(files.read_whole("plain", 7), "content");
  EXPECT_EQ(files.read_whole(folder.path("plain"), 7), "content");
  EXPECT_EQ(code_of([&] { files.read_whole("plain", 6); }), Errc::out_of_memory);
  EXPECT_EQ(files.size("plain"), 7U);
  EXPECT_THAT(names(), UnorderedElementsAre("sub", "plain", "link", "dangling", "fifo"));
}

TEST_F(UvFilesTest, ReadsAndWritesAtOffsets) {
  const auto file = files.open_partial("sub", "part");
  EXPECT_EQ(code_of([&] { file->write(1, "x"); }), Errc::input_past_end);
  file->write(0, "hello world");
  file->write(6, "W");
  file->sync();
  EXPECT_EQ(file->size(), 11U);
  EXPECT_EQ(file->read(6, 100), "World");
  EXPECT_EQ(file->read(11, 5), "");
  EXPECT_EQ(file->read(std::uint64_t{1} << 63U, 5), "");
  file->truncate(5);
  EXPECT_EQ(files.open_partial("sub", "part")->read(0, 100), "hello");  // never cut by opening
  EXPECT_THROW(file->truncate(~std::uint64_t{0}), PlatformError);
  EXPECT_THROW(files.open_for_reading("plain")->write(0, "x"), PlatformError);
}

TEST_F(UvFilesTest, PartialNamesAreOneEntryOfTheirFolder) {
  for (const std::string& name :
       {std::string(), std::string("."), std::string(".."), std::string("a/b"),
        std::string("../plain"), std::string("/etc/x"), std::string("a\0b", 3)}) {
    EXPECT_EQ(code_of([&] { files.open_partial("sub", name); }), Errc::bad_file_name) << name;
    EXPECT_EQ(code_of([&] { files.finish_partial(".", "plain", name); }), Errc::bad_file_name);
  }
  for (const std::string& missing : {std::string(), std::string("no folder")}) {
    EXPECT_EQ(code_of([&] { files.open_partial(missing, "x"); }), Errc::path_not_found);
    EXPECT_EQ(code_of([&] { files.list(missing); }), Errc::path_not_found);
  }
}

TEST_F(UvFilesTest, FinishingReplacesNothing) {
  files.open_partial("sub", "song.download")->write(0, "new");
  files.save("sub/song", "old");
  for (const std::string taken : {"song", "link"}) {
    fs::remove(folder.path("sub/link"));
    fs::create_symlink("nowhere", folder.path("sub/link"));
    EXPECT_EQ(code_of([&] { files.finish_partial("sub", "song.download", taken); }),
              Errc::file_exists);
  }
  EXPECT_EQ(files.read_whole("sub/song", 10), "old");
  files.finish_partial("sub", "song.download", "song 2");
  EXPECT_EQ(files.read_whole("sub/song 2", 10), "new");
  EXPECT_THAT(names("sub"), UnorderedElementsAre("song", "song 2", "link"));
}

TEST_F(UvFilesTest, ListsVisibleRegularFilesOnce) {
  std::ofstream(folder.path(".hidden")) << "x";
  std::ofstream(folder.path("no dot")) << "x";
  const auto listing = files.list(".");
  std::vector<std::string> found;
  while (const auto name = listing->next()) found.push_back(*name);
  EXPECT_THAT(found, UnorderedElementsAre("plain", "no dot"));
  EXPECT_EQ(listing->next(), std::nullopt);
}

TEST_F(UvFilesTest, SavingIsAllOrNothingAndLeavesNoTemporary) {
  files.save("settings", "one");
  files.save("settings", "two");
  files.save(folder.path("sub/deep"), "three");
  EXPECT_EQ(files.read_whole("settings", 100), "two");
  EXPECT_EQ(files.read_whole("sub/deep", 100), "three");
  EXPECT_EQ(mode("settings"), 0600U);

  {
    std::signal(SIGXFSZ, SIG_IGN);
    const ResourceLimit limit(RLIMIT_FSIZE, 1000);
    EXPECT_THROW(files.save("settings", std::string(5000, 'x')), PlatformError);
    EXPECT_THROW(files.append("plain", std::string(5000, 'x')), PlatformError);
  }
  EXPECT_EQ(files.read_whole("settings", 100), "two");

  EXPECT_EQ(code_of([&] { files.save("no/x", "x"); }), Errc::path_not_found);
  EXPECT_EQ(code_of([&] { files.save("sub/", "x"); }), Errc::bad_file_name);
  EXPECT_THAT(names(),
              UnorderedElementsAre("sub", "plain", "link", "dangling", "fifo", "settings"));
  EXPECT_THAT(names("sub"), UnorderedElementsAre("deep"));
}

TEST_F(UvFilesTest, AppendsToTheEnd) {
  files.append("log", "one\n");
  files.append("log", "two\n");
  EXPECT_EQ(files.read_whole("log", 100), "one\ntwo\n");
  EXPECT_EQ(mode("log"), 0600U);
}

TEST_F(UvFilesTest, TheProfileIsLockedForOthers) {
  UvFiles other(folder.path());
  auto lock = files.lock_profile();
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(other.lock_profile(), nullptr);
  lock.reset();
  EXPECT_NE(other.lock_profile(), nullptr);
}

TEST_F(UvFilesTest, AMissingProfileIsMadeForItsOwner) {
  UvPlatform platform(folder.path("a/b/profile"), "127.0.0.1");
  EXPECT_EQ(mode("a"), 0700U);
  EXPECT_EQ(mode("a/b/profile"), 0700U);
  platform.platform().files.save("x", "data");
  EXPECT_EQ(files.read_whole("a/b/profile/x", 100), "data");
  EXPECT_THROW(UvPlatform(folder.path("plain"), ""), PlatformError);
}

TEST(ConsoleScreen, WritesBoxesAndAnswersYes) {
  std::FILE* output = std::tmpfile();
  ConsoleScreen screen(output);
  screen.show(BoxIcon::critical, "Velmora", "two\nlines");
  bool answer = false;
  screen.ask("Really", "Delete?", [&](bool yes) { answer = yes; });
  EXPECT_TRUE(answer);
  EXPECT_THROW(screen.open_text_file("x"), PlatformError);
  std::rewind(output);
  char text[100] = {};
  const std::size_t size = std::fread(text, 1, sizeof text, output);
  std::fclose(output);
  EXPECT_EQ(std::string(text, size), "Velmora: two lines\nReally: Delete?\n");
}

}  // namespace
}  // namespace velmora::uv
