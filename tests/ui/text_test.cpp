// How texts that strangers chose look on the screen.
#include <gtest/gtest.h>

#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

TEST(Text, ShowsEveryByteAndHidesNoCharacter) {
  struct Case {
    std::string bytes;
    QString shown;
  };
  const Case table[] = {
      {"plain ~", "plain ~"},
      {"caf\xC3\xA9 \xF0\x9F\x8E\xB5", "caf\u00E9 \U0001F3B5"},
      {"caf\xE9", "caf\u00E9"},  // not UTF-8, so Latin-1
      {"a\x80", "a\\u0080"},     // Latin-1's own control characters
      {std::string("\0\n\x1B[31m\x7F", 8), "\u2400\u240A\u241B[31m\u2421"},
      {"gpj.\xE2\x80\xAE"
       "exe",
       "gpj.\\u202Eexe"},
      {"a\xE2\x80\x8B\xEF\xBB\xBF\xD8\x9C\xC2\xAD", "a\\u200B\\uFEFF\\u061C\\u00AD"},
      {"\xE2\x80\xA8\xE2\x81\xA5\xE3\x85\xA4\xF3\xA0\x81\x81", "\\u2028\\u2065\\u3164\\uE0041"},
      {"<b>&amp;</b>", "<b>&amp;</b>"},
  };
  for (const Case& c : table) EXPECT_EQ(shown(c.bytes), c.shown) << c.bytes;
  EXPECT_EQ(shown_lines("a\r\nb\nc\rd\te"), "a\nb\nc\nd\te");
}

TEST(Text, TooltipsAreNeverMarkup) {
  EXPECT_EQ(plain_tooltip("a & b"), "a & b");
  EXPECT_FALSE(plain_tooltip("<img src='x'>").contains("<img"));
  EXPECT_FALSE(plain_tooltip(QString(200, 'a') + "<img src='x'>").contains("<img"));
  EXPECT_LT(plain_tooltip(QString(1'000'000, 'a')).size(), 2000);
}

}  // namespace
}  // namespace velmora::ui
