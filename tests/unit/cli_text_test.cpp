#include <gtest/gtest.h>

#include "cli/table.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

TEST(CliVisibleText, NothingThatDrivesATerminalPasses) {
  const struct {
    std::string text;
    std::string shown;
  } cases[] = {
      {"plain name.mp3", "plain name.mp3"},
      {"Größe 日本 🎵", "Größe 日本 🎵"},
      {"\x1b[2Jgone", "\\x1B[2Jgone"},
      {"a\tb\r\nc\x7f", "a\\x09b\\x0D\\x0Ac\\x7F"},
      {std::string("nul\0!", 5), "nul\\x00!"},
      {"c1 \xC2\x9B!", "c1 \\x9B!"},
      {"gpj.\xE2\x80\xAEtxt", "gpj.\\u202Etxt"},
      {"\xE2\x81\xA6isolate", "\\u2066isolate"},
      {"un\xE2\x80\x8Bseen", "un\\u200Bseen"},
      {"tag \xF3\xA0\x80\xA1", "tag \\uE0021"},
      {"latin \xE9t\xE9", "latin \\xE9t\\xE9"},
      {"overlong \xC0\x80", "overlong \\xC0\\x80"},
      {"surrogate \xED\xA0\x80", "surrogate \\xED\\xA0\\x80"},
      {"cut \xE2\x82", "cut \\xE2\\x82"},
      {"beyond \xF4\x90\x80\x80", "beyond \\xF4\\x90\\x80\\x80"},
  };
  for (const auto& c : cases) EXPECT_EQ(visible(c.text), c.shown);
  EXPECT_EQ(visible_lines("one\r\ntwo\tx\ny\rz\x1b"), "one\ntwo\tx\ny\\x0Dz\\x1B");
}

TEST(CliVisibleText, WidthsAreTerminalColumns) {
  EXPECT_EQ(columns("abc"), 3U);
  EXPECT_EQ(columns("日本"), 4U);
  EXPECT_EQ(columns("e\u0301"), 1U);  // a combining accent
  EXPECT_EQ(columns("é…"), 2U);
  EXPECT_EQ(cut_to("abcdef", 6), "abcdef");
  EXPECT_EQ(cut_to("abcdef", 4), "abc…");
  EXPECT_EQ(cut_to("日本語", 4), "日…");  // half of a wide character is not shown
  EXPECT_EQ(cut_to("abc", 0), "");
  EXPECT_EQ(padded("日本", 6), "日本  ");
  EXPECT_EQ(padded("12", 4, true), "  12");
}

TEST(CliVisibleText, ArgumentsThatAreNotUtf8TravelAsLatin1) {
  EXPECT_EQ(to_wire("Gr\xC3\xB6\xC3\x9F"
                    "e"),
            "Größe");
  EXPECT_EQ(to_wire("Gr\xF6\xDF"
                    "e"),
            "Größe");
}

TEST(CliTable, LinesUpByColumnsAndSetsNumbersRight) {
  Table table({"Row", "Name", "Size"});
  table.add({"1", "日本", "1,234"});
  table.add({"10", "plain", "7"});
  table.add({"11", "bad\nname"});
  EXPECT_EQ(table.text(),
            "Row  Name          Size\n"
            "  1  日本         1,234\n"
            " 10  plain            7\n"
            " 11  bad\\x0Aname\n");
}

TEST(CliTable, CutsTheWidestColumnToFit) {
  Table table({"Name", "Status"});
  table.add({"a very long name of a file.mp3", "Done"});
  EXPECT_EQ(table.text(20),
            "Name          Status\n"
            "a very long…  Done\n");
  // a column keeps some width, however narrow the terminal is
  EXPECT_EQ(table.text(1),
            "Name      Status\n"
            "a very …  Done\n");
}

}  // namespace
}  // namespace velmora::cli
