// The parts of a large library's scan that need no disk: patterns for names, and file numbers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "share/file_numbers.h"
#include "share/name_patterns.h"

namespace velmora {
namespace {

TEST(NamePatterns, FitWholeNames) {
  const struct {
    const char* patterns;
    const char* name;
    bool fit;
  } cases[] = {
      {"*.part", "song.mp3.part", true},
      {"*.part", "song.part.mp3", false},
      {" *.PART ; thumbs.db ", "Thumbs.DB", true},
      {"*.part", ".part", true},
      {"a?c", "abc", true},
      {"a?c", "ac", false},
      {"*a*b*", "xxaxxabx", true},
      {"*ab*ab", "abab", true},
      {"*ab*ab", "aba", false},
      {"*ab*ab", "xabxabab", true},
      {"*", "", true},
      {"**", "anything", true},
      {"", "", false},
      {";; ;", "x", false},
      {"x", "xy", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(NamePatterns(c.patterns).fit(c.name), c.fit) << c.patterns << " on " << c.name;
  }
  std::string many;
  for (std::size_t i = 0; i < kMaxNamePatterns; ++i) many += "a;";
  EXPECT_FALSE(NamePatterns(many + "x").fit("x"));
  // A pattern that has to be tried in every place is still quick.
  EXPECT_FALSE(NamePatterns("*a*a*a*a*a*a*a*a*a*a*b").fit(std::string(255, 'a')));
}

std::vector<SharedFile> files(const std::string& names) {
  std::vector<SharedFile> made;
  for (const char name : names) {
    made.push_back({std::string(1, name), 1, "/d", 0});
  }
  return made;
}

std::string names(const OneBased<SharedFile>& list) {
  std::string all;
  for (const SharedFile& file : list) all += file.name;
  return all;
}

TEST(FileNumbers, StayWithTheirFilesWithoutAGap) {
  const struct {
    const char* before;
    const char* found;
    const char* after;
  } cases[] = {
      {"", "abc", "abc"},          {"abc", "abc", "abc"}, {"abc", "cab", "abc"},
      {"abc", "xabc", "abcx"},     {"abc", "xc", "xc"},   {"abcd", "dbx", "dbx"},
      {"abcde", "aexyc", "axcye"}, {"abc", "", ""},       {"aab", "ab", "ab"},
  };
  for (const auto& c : cases) {
    OneBased<SharedFile> before;
    before.resize(std::string(c.before).size());
    const auto records = files(c.before);
    for (std::size_t i = 1; i <= records.size(); ++i) before.at(i) = records[i - 1];
    EXPECT_EQ(names(numbered(files(c.found), before)), c.after) << c.before << ", " << c.found;
  }
}

TEST(FileNumbers, TheCountOfUploadsStaysToo) {
  OneBased<SharedFile> before;
  before.resize(2);
  before.at(1) = {"gone", 1, "/d", 5};
  before.at(2) = {"song.mp3\00144100\001128000", 1, "/d", 7};
  const auto after = numbered({{"song.mp3\001\001", 9, "/d", 0}, {"gone", 1, "/e", 0}}, before);
  EXPECT_EQ(after.at(2).name, "song.mp3\001\001");
  EXPECT_EQ(after.at(2).uploads, 7);
  EXPECT_EQ(after.at(2).size, 9);
  EXPECT_EQ(after.at(1).uploads, 0) << "the same name in another folder is another file";
}

}  // namespace
}  // namespace velmora
