#include "share/name_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
namespace {

std::vector<std::string> some_names(std::mt19937& random, std::size_t count) {
  const std::vector<std::string> parts = {"night", "Train",     "of",  "a", "01",
                                          "live",  "Z\xC3\xA4", "mp3", "-", ""};
  std::vector<std::string> names(count);
  for (std::string& name : names) {
    for (auto i = random() % 6; i > 0; --i) name += parts[random() % parts.size()] + ' ';
    name += std::to_string(random() % 1000);
    name.resize(name.size() - random() % std::min<std::size_t>(name.size(), 3));
  }
  return names;
}

std::vector<std::size_t> read_all(const std::vector<std::string>& names,
                                  std::span<const std::string_view> words, double limit) {
  std::vector<std::size_t> found;
  for (std::size_t number = 1; number <= names.size(); ++number) {
    std::string name = names[number - 1];
    make_upper_case(name);
    if (std::all_of(words.begin(), words.end(),
                    [&](std::string_view word) { return name.find(word) != std::string::npos; })) {
      found.push_back(number);
    }
    if (limit <= static_cast<double>(found.size())) break;
  }
  return found;
}

TEST(NameIndex, FindsWhatReadingEveryNameFinds) {
  std::mt19937 random(7);
  const std::vector<std::vector<std::string_view>> questions = {
      {},          {""},        {"A"},         {"NIGHT"},   {"NIGHT", "TRAIN"}, {"", "IGH", "1"},
      {"99"},      {"N 12"},    {"Z\xC3\xA4"}, {"NOWHERE"}, {"ANOWHERE", "A"},  {"LIVE LIVE LIVE"},
      {"T TRAIN"}, {"MP3", "5"}};
  for (const std::size_t count :
       {std::size_t{0}, std::size_t{1}, std::size_t{99}, NameIndex::kFewNames - 1,
        NameIndex::kFewNames, std::size_t{5000}}) {
    const std::vector<std::string> names = some_names(random, count);
    const NameIndex index({names.begin(), names.end()});
    for (const auto& words : questions) {
      for (const double limit : {-1.0, 0.0, 0.5, 1.0, 50.0, 1e9}) {
        EXPECT_EQ(index.find(words, limit).names, read_all(names, words, limit))
            << count << " names, " << testing::PrintToString(words) << ", limit " << limit;
      }
    }
  }
}

TEST(NameIndex, ReadsOnlyNamesThatMayMatch) {
  std::vector<std::string> names;
  for (int i = 0; i < 20'000; ++i) names.push_back("track " + std::to_string(i) + " of many.mp3");
  const NameIndex index({names.begin(), names.end()});
  const auto find = [&](std::initializer_list<std::string_view> words) {
    return index.find({words.begin(), words.end()}, 50);
  };
  const NameMatches rare = find({"TRACK", "19999"});
  EXPECT_EQ(rare.names, std::vector<std::size_t>{20'000});
  EXPECT_LT(rare.names_read, 100U);
  EXPECT_EQ(find({"TRACK", "NOWHERE"}).names_read, 0U);
  EXPECT_EQ(find({"MP3"}).names_read, 50U);
}

}  // namespace
}  // namespace velmora
