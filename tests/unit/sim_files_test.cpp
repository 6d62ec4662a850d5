#include "platform/sim/sim_files.h"

#include <gmock/gmock.h>

#include <functional>

#include "support/doubles.h"

namespace velmora::sim {
namespace {

using ::testing::ElementsAre;

TEST(SimFiles, ErrorsOfPaths) {
  SimFiles files;
  files.put("share/song.mp3", "abc");
  struct Case {
    const char* what;
    std::function<void()> call;
    const char* error;
  };
  const Case cases[] = {
      {"open missing", [&] { (void)files.open_for_reading("x"); }, "No such file or directory"},
      {"open folder", [&] { (void)files.open_for_reading("share"); }, "Is a directory"},
      {"below a file", [&] { (void)files.size("share/song.mp3/x"); }, "Not a directory"},
      {"list missing", [&] { (void)files.list("none"); }, "No such file or directory"},
      {"list empty", [&] { (void)files.list(""); }, "No such file or directory"},
      {"list file", [&] { (void)files.list("share/song.mp3"); }, "Not a directory"},
      {"save nowhere", [&] { files.save("none/x", "1"); }, "No such file or directory"},
      {"append nowhere", [&] { files.append("none/x", "1"); }, "No such file or directory"},
      {"append empty", [&] { files.append("", "1"); }, "No such file or directory"},
      {"no folder", [&] { (void)files.open_partial("", "x"); }, "No such file or directory"},
      {"name empty", [&] { (void)files.open_partial("share", ""); }, "Bad file name"},
      {"name .", [&] { (void)files.open_partial("share", "."); }, "Bad file name"},
      {"name ..", [&] { (void)files.open_partial("share", ".."); }, "Bad file name"},
      {"name /", [&] { (void)files.open_partial("share", "a/b"); }, "Bad file name"},
      {"finish missing", [&] { files.finish_partial("share", "x", "y"); },
       "No such file or directory"},
      {"finish onto", [&] { files.finish_partial("share", "song.mp3", "song.mp3"); },
       "File exists"},
      {"too big", [&] { (void)files.read_whole("share/song.mp3", 2); }, "Out of memory"},
  };
  for (const Case& c : cases) EXPECT_EQ(error_of(c.call), c.error) << c.what;
  EXPECT_THAT(files.names("share"), ElementsAre("song.mp3"));
}

TEST(SimFiles, PartialFilesAreWrittenInPlaceAndFinished) {
  SimFiles files;
  files.make_folder("down");
  const auto file = files.open_partial("down", "a.download");
  file->write(0, "hello");
  file->write(3, "p me");
  EXPECT_EQ(error_of([&] { file->write(8, "x"); }), "Input past end of file");
  EXPECT_EQ(file->read(3, 2), "p ");
  EXPECT_EQ(file->read(7, 2), "");
  EXPECT_EQ(files.open_partial("down", "a.download")->size(), 7U);  // never truncated
  file->truncate(4);
  files.finish_partial("down", "a.download", "a");
  EXPECT_EQ(files.content("down/a"), "help");
  EXPECT_FALSE(files.exists("down/a.download"));
  EXPECT_NE(error_of([&] { files.open_for_reading("down/a")->write(0, "x"); }), "none");
}

TEST(SimFiles, AFullDiskKeepsTheOldFileOfASave) {
  SimFiles files;
  files.put("list", "12345");
  files.set_capacity(10);
  files.save("list", "abcde");  // old and new beside each other just fit
  EXPECT_EQ(error_of([&] { files.save("list", "abcdef"); }), "No space left on device");
  EXPECT_EQ(files.content("list"), "abcde");
  EXPECT_EQ(error_of([&] { files.append("list", "123456"); }), "No space left on device");
  EXPECT_EQ(files.content("list"), "abcde12345");
  const auto file = files.open_partial(".", "list");
  file->write(5, "fghij");  // needs no room
  EXPECT_EQ(error_of([&] { file->write(10, "k"); }), "No space left on device");
  EXPECT_EQ(error_of([&] { file->truncate(11); }), "No space left on device");
  EXPECT_EQ(files.content("list"), "abcdefghij");
}

TEST(SimFiles, ACrashLosesWhatWasNotSynced) {
  SimFiles files;
  files.make_folder("down");
  files.save("saved", "old");
  files.save("saved", "new");
  files.append("log", "never synced");
  files.put("put", "kept");
  files.append("put", " lost");
  const auto partial = files.open_partial("down", "a");
  partial->write(0, "12345");
  partial->sync();
  partial->write(5, "678");
  const auto done = files.open_partial("down", "b.download");
  done->write(0, "done");
  files.finish_partial("down", "b.download", "b");
  auto lock = files.lock_profile();
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(files.lock_profile(), nullptr);

  files.crash();

  EXPECT_EQ(files.content("saved"), "new");
  EXPECT_FALSE(files.exists("log"));
  EXPECT_EQ(files.content("put"), "kept");
  EXPECT_EQ(files.content("down/a"), "12345");
  EXPECT_EQ(files.content("down/b"), "done");
  EXPECT_NE(error_of([&] { partial->write(0, "x"); }), "none");
  const auto second = files.lock_profile();
  EXPECT_NE(second, nullptr);
  lock.reset();  // the dead program's lock frees nothing
  EXPECT_EQ(files.lock_profile(), nullptr);
}

}  // namespace
}  // namespace velmora::sim
