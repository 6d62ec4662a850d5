#include "transfer/parse_filename.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/doubles.h"

namespace velmora {
namespace {

using namespace std::string_literals;

struct Case {
  std::string text;
  ParsedName parsed;
  std::string line;  // the debug line, if one is due
};

TEST(ParseFilename, SplitsNamesAndReportsWhatCannotBeSplit) {
  const std::string invalid = "parse_filename: Invalid procedure call or argument";
  const std::vector<Case> cases = {
      {"song.mp3", {"song", "mp3", "", ""}, ""},
      {"a.b.mp3", {"a.b", "mp3", "", ""}, ""},
      {"readme", {"readme", "", "", ""}, ""},
      {"readme.", {"readme", "", "", ""}, ""},
      {"", {"", "", "", ""}, ""},
      {".profile", {"", "", "", ""}, ""},
      {"..x", {".", "x", "", ""}, ""},
      {"song.mp3\0junk"s, {"song", "mp3", "", ""}, ""},
      {"a.b.mp3\1"s + "44100\1"s + "128", {"a.b", "mp3", "44100", "128"}, ""},
      {"s.mp3\1"s + "44100\1"s + "128\0x"s, {"s", "mp3", "44100", "128"}, ""},
      {"s.mp3\1\1"s, {"s", "mp3", "", ""}, ""},
      // Without a dot the audio information stays in the name; one at the start matches no case.
      {"song\1"s + "1\1"s + "2", {"song\1"s + "1\1"s + "2", "", "", ""}, ""},
      {"\1.mp3"s, {"", "", "", ""}, ""},
      // The second mark is missing, a mark or a zero stands before the last dot.
      {"s.mp3\1"s + "44100", {"s", "mp3", "", ""}, invalid},
      {"a\1"s + "b.mp3", {"a\1"s + "b", "", "", ""}, invalid},
      {"a\0b.mp3"s, {"a\0b"s, "", "", ""}, invalid},
      {"s.mp3\0\1"s + "1\1"s + "2", {"s", "mp3\0"s, "1", ""}, invalid},
  };
  for (const Case& c : cases) {
    Lines log;
    const ParsedName parsed = parse_filename(c.text, log);
    SCOPED_TRACE(testing::PrintToString(c.text));
    EXPECT_EQ(parsed.name, c.parsed.name);
    EXPECT_EQ(parsed.extension, c.parsed.extension);
    EXPECT_EQ(parsed.frequency, c.parsed.frequency);
    EXPECT_EQ(parsed.bitrate, c.parsed.bitrate);
    EXPECT_EQ(log.lines,
              c.line.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.line});
  }
}

}  // namespace
}  // namespace velmora
