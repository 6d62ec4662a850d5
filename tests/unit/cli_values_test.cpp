#include <gtest/gtest.h>

#include "cli/failure.h"
#include "cli/values.h"

namespace velmora::cli {
namespace {

TEST(CliValues, AValueTakesTheFormOfItsControl) {
  const struct {
    const char* kind;
    const char* text;
    nlohmann::json value;
  } cases[] = {
      {"text field", "50", "50"}, {"text field", "", ""},       {"combo list", "true", "true"},
      {"check box", "on", true},  {"CheckBox", "FALSE", false}, {"check box", "0", false},
      {"slider", "-20", -20},     {"option group", "3", 3},     {"", "whatever", "whatever"},
  };
  for (const auto& c : cases) EXPECT_EQ(value_for(c.kind, c.text), c.value) << c.kind << c.text;
  for (const auto& [kind, text] : {std::pair{"check box", "maybe"},
                                   {"check box", ""},
                                   {"slider", "fast"},
                                   {"slider", "12x"},
                                   {"slider", "99999999999999999999"},
                                   {"option group", ""}}) {
    EXPECT_THROW(value_for(kind, text), Failure) << kind << text;
  }
}

TEST(CliValues, WhatIsSharedAsText) {
  EXPECT_EQ(shared_text(3U, 4096U), "3 files, 4,096 bytes");
  EXPECT_EQ(shared_text(1U, 0U, " shared"), "1 file shared, 0 bytes");
  EXPECT_EQ(shared_text(0U, 0U, " shared"), "0 files shared, 0 bytes");
  EXPECT_EQ(shared_text(0U, 4096U, " shared"),
            "4,096 bytes shared, as an earlier scan listed them");
}

TEST(CliValues, ValuesAsText) {
  EXPECT_EQ(value_text("a text"), "a text");
  EXPECT_EQ(value_text(true), "true");
  EXPECT_EQ(value_text(500), "500");
  EXPECT_EQ(value_text({"one", "two"}), "one\ntwo");
  EXPECT_EQ(number_or_text("1,234"), 1234);
  EXPECT_EQ(number_or_text("--"), "--");
  EXPECT_EQ(number_or_text(""), "");
}

TEST(CliValues, CountsAreShownWithTheirThousandsApart) {
  EXPECT_EQ(shown_value(number_or_text("65,000,032")), "65,000,032");
  EXPECT_EQ(shown_value(number_or_text("--")), "--");
  EXPECT_EQ(version_number("Version: 0.1.0"), "0.1.0");
  EXPECT_EQ(version_number(""), "");
}

TEST(CliValues, NamesMatchByPartOrByPattern) {
  EXPECT_TRUE(name_matches("", "port_config"));
  EXPECT_TRUE(name_matches("PORT", "upport_config"));
  EXPECT_TRUE(name_matches("*_CONFIG", "upport_config"));
  EXPECT_FALSE(name_matches("port*", "upport_config"));
  EXPECT_FALSE(name_matches("stat", "port_config"));
}

TEST(CliValues, AnAddressIsFoundWholeOnly) {
  EXPECT_TRUE(shows_address("127.0.0.2:6346", "127.0.0.2"));
  EXPECT_TRUE(shows_address("127.0.0.2", "127.0.0.2"));
  EXPECT_TRUE(shows_address("host.example (127.0.0.2)", "127.0.0.2"));
  EXPECT_FALSE(shows_address("127.0.0.21:6346", "127.0.0.2"));
  EXPECT_FALSE(shows_address("1127.0.0.2", "127.0.0.2"));
  EXPECT_TRUE(shows_address("1127.0.0.2 127.0.0.2", "127.0.0.2"));
  EXPECT_FALSE(shows_address("anything", ""));
  EXPECT_EQ(without_port("127.0.0.2:6346"), "127.0.0.2");
  EXPECT_EQ(without_port("127.0.0.2"), "127.0.0.2");
}

TEST(CliValues, WhatABoundedLogGained) {
  EXPECT_EQ(added_text("", "a\n"), "a\n");
  EXPECT_EQ(added_text("a\nb\n", "a\nb\nc\n"), "c\n");
  EXPECT_EQ(added_text("a\nb\nc\n", "a\nb"), "");       // cut at its end
  EXPECT_EQ(added_text("a\nb\nc\n", "c\nd\n"), "d\n");  // cut at its start
  EXPECT_EQ(added_text("a\n", "x\n"), "x\n");
  EXPECT_EQ(added_text("a\n", ""), "");
  EXPECT_EQ(occurrences("Scan: 1\r\nScan: 2\r\n", "Scan:"), 2U);
  EXPECT_EQ(last_line_with("Scan: 1\r\nother\r\nScan: 2\r\nlast\r\n", "Scan:"), "Scan: 2");
  EXPECT_EQ(last_line_with("other", "Scan:"), "");
}

TEST(CliValues, ADownloadIsTheResultThatWasQueued) {
  EXPECT_TRUE(is_download_of("song", "song", "mp3"));
  EXPECT_TRUE(is_download_of("song.MP3", "song", "mp3"));
  EXPECT_FALSE(is_download_of("song.ogg", "song", "mp3"));
  EXPECT_FALSE(is_download_of("song2.mp3", "song", "mp3"));
  EXPECT_FALSE(is_download_of("Song.mp3", "song", "mp3"));
}

TEST(CliValues, TheProfileWithoutTheOption) {
  EXPECT_EQ(default_profile("/data", "/home/me"), "/data/velmora");
  EXPECT_EQ(default_profile(nullptr, "/home/me"), "/home/me/.local/share/velmora");
  EXPECT_EQ(default_profile("", "/home/me"), "/home/me/.local/share/velmora");
  EXPECT_EQ(default_profile("relative", "/home/me"), "/home/me/.local/share/velmora");
}

}  // namespace
}  // namespace velmora::cli
