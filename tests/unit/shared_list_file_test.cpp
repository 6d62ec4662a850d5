#include "share/shared_list_file.h"

#include <gtest/gtest.h>

#include "platform/error.h"
#include "platform/sim/sim_files.h"

namespace velmora {
namespace {

using sim::SimFiles;

constexpr const char* kHead =
    "\"Rows in this file:\",2\r\n\"Format: Row #, Filename, Size, Path, Uploads\"\r\n";

SharedFile shared_file(std::string name, std::int32_t size, std::string path,
                       std::int16_t uploads = 0) {
  SharedFile file;
  file.name = std::move(name);
  file.size = size;
  file.path = std::move(path);
  file.uploads = uploads;
  return file;
}

void fill(SharedIndex& index, const std::vector<SharedFile>& files) {
  OneBased<SharedFile> list;
  for (const SharedFile& file : files) {
    list.grow_to(list.upper_bound() + 1);
    list.at(list.upper_bound()) = file;
  }
  index.replace(std::move(list));
}

TEST(SharedListFile, IsWrittenByteForByte) {
  SimFiles files;
  SharedIndex index;
  EXPECT_EQ(save_shared(files, "list", index), "");
  EXPECT_EQ(files.content("list"),
            "\"Rows in this file:\",0\r\n\"Format: Row #, Filename, Size, Path, Uploads\"\r\n");

  fill(index, {shared_file("song.mp3\00144100\001128000", 5, "/music", 7),
               shared_file("say \"hi\",\r\n.txt", 2147483647, "/a \"b\"")});
  EXPECT_EQ(save_shared(files, "list", index), "");
  EXPECT_EQ(files.content("list"),
            std::string(kHead) +
                "1,\"song.mp3\00144100\001128000\",5,\"/music\",7\r\n"
                "2,\"say \"\"hi\"\",\r\n.txt\",2147483647,\"/a \"\"b\"\"\",0\r\n");
}

TEST(SharedListFile, ComesBackAsItWasSaved) {
  std::string every_byte;
  for (int byte = 0; byte < 256; ++byte) every_byte += static_cast<char>(byte);
  SimFiles files;
  SharedIndex saved;
  fill(saved, {shared_file(every_byte, 1000000000, "\"", -3), shared_file("", 0, ""),
               shared_file("c", 2000000000, "/c", 32767)});
  ASSERT_EQ(save_shared(files, "list", saved), "");

  SharedIndex loaded;
  std::string total;
  ASSERT_EQ(load_shared(files, "list", loaded, total), "");
  EXPECT_EQ(total, "3000000000");
  ASSERT_EQ(loaded.shared_files().upper_bound(), 3U);
  for (std::size_t i = 1; i <= 3; ++i) {
    EXPECT_EQ(loaded.shared_files().at(i).name, saved.shared_files().at(i).name);
    EXPECT_EQ(loaded.shared_files().at(i).size, saved.shared_files().at(i).size);
    EXPECT_EQ(loaded.shared_files().at(i).path, saved.shared_files().at(i).path);
    EXPECT_EQ(loaded.shared_files().at(i).uploads, saved.shared_files().at(i).uploads);
  }
}

struct BadList {
  const char* what;
  std::string text;
  std::string error;
  std::size_t rows_left;
};

TEST(SharedListFile, ReportsWhatIsWrongAndKeepsTheRowsReadByThen) {
  const std::string head = kHead;
  const std::string row = "9,\"a\",1,\"/d\",0\r\n";
  const std::string first = "\"Rows in this file:\",";
  const std::string format = "\r\n\"Format\"\r\n";
  const BadList cases[] = {
      {"empty", "", "Input past end of file", 0},
      {"row missing", head + row, "Input past end of file", 1},
      {"bytes behind a quote", head + row + "2,\"b\"c,1,\"/d\",0\r\n", "Type mismatch", 1},
      {"size missing", head + row + "2,\"b\",,\"/d\",0\r\n", "Type mismatch", 1},
      {"a field too many", head + row + "2,\"b\",1,\"/d\",0,1\r\n", "Type mismatch", 1},
      {"size beyond 32 bits", head + row + "2,\"b\",2147483648,\"/d\",0\r\n", "Overflow", 1},
      {"negative size", head + row + "2,\"b\",-1,\"/d\",0\r\n", "Overflow", 1},
      {"uploads beyond 16 bits", head + row + "2,\"b\",1,\"/d\",32768\r\n", "Overflow", 1},
      {"more rows than numbers", first + "32768" + format + row, "Overflow", 0},
      {"rows claimed, none there", first + "32767" + format, "Input past end of file", 0},
  };
  for (const BadList& bad : cases) {
    SCOPED_TRACE(bad.what);
    SimFiles files;
    files.put("list", bad.text);
    SharedIndex index;
    std::string total;
    EXPECT_EQ(load_shared(files, "list", index, total), "load_shared: " + bad.error);
    EXPECT_EQ(total, "");
    EXPECT_EQ(index.shared_files().upper_bound(), bad.rows_left);
  }
}

TEST(SharedListFile, AcceptsOtherLineEndsAndWhatFollowsTheLastRow) {
  SimFiles files;
  files.put("list", "\"Rows\",1\n\"Format\"\r1,\"a\",5,\"/d\",0\nanything");
  SharedIndex index;
  std::string total;
  EXPECT_EQ(load_shared(files, "list", index, total), "");
  EXPECT_EQ(total, "5");
}

TEST(SharedListFile, ReportsTheDisksErrorsAndLeavesTheListAlone) {
  SimFiles files;
  SharedIndex index;
  fill(index, {shared_file("a", 1, "/d")});
  std::string total;
  EXPECT_EQ(load_shared(files, "list", index, total), "load_shared: No such file or directory");
  files.put("list", std::string(kMaxSharedListFile + 1, 'x'));
  EXPECT_EQ(load_shared(files, "list", index, total), "load_shared: Out of memory");
  EXPECT_EQ(index.shared_files().upper_bound(), 1U);
  files.remove("list");
  files.set_capacity(10);
  EXPECT_EQ(save_shared(files, "list", index), "save_shared: No space left on device");
  EXPECT_FALSE(files.exists("list"));
}

}  // namespace
}  // namespace velmora
