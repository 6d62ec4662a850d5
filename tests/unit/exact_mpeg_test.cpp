#include "media/exact_mpeg.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "platform/sim/sim_files.h"
#include "support/doubles.h"

namespace velmora {
namespace {

// "frequency bitrate", or "none" when the file tells nothing and the line says so.
std::string read(const std::string& content) {
  sim::SimFiles files;
  files.put("f", content);
  Lines log;
  Mp3Info info;
  Get_exact_mp3_info(*files.open_for_reading("f"), info, log);
  if (log.lines.empty()) return info.frequency + " " + info.bitrate;
  EXPECT_EQ(log.lines,
            std::vector<std::string>{"Get_mp3_info: Invalid procedure call or argument"});
  EXPECT_EQ(info.frequency + info.bitrate, "");
  return "none";
}

enum : int { kMpeg25 = 0, kMpeg2 = 2, kMpeg1 = 3 };

// A whole frame: its header, then zeros up to its length.
std::string frame(int version, int layer, int bitrate_index, int frequency_index,
                  std::size_t length, bool padded = false) {
  std::string bytes(length, '\0');
  bytes[0] = '\xFF';
  bytes[1] = static_cast<char>(0xE1 | version << 3 | (4 - layer) << 1);
  bytes[2] = static_cast<char>(bitrate_index << 4 | frequency_index << 2 | (padded ? 2 : 0));
  return bytes;
}

const std::string kFrame = frame(kMpeg1, 3, 9, 0, 417);  // 128 kbit/s at 44100 Hz
const std::string kGood = "44100 128000";

// Published figures: every version, layer, bit rate and sampling rate.
TEST(ExactMpeg, AllRates) {
  struct Column {
    std::vector<int> versions;
    int layer;
    int samples;
    int kbits[14];
  };
  const Column columns[] = {
      {{kMpeg1}, 1, 384, {32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448}},
      {{kMpeg1}, 2, 1152, {32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384}},
      {{kMpeg1}, 3, 1152, {32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}},
      {{kMpeg2, kMpeg25}, 1, 384, {32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256}},
      {{kMpeg2, kMpeg25}, 2, 1152, {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}},
      {{kMpeg2, kMpeg25}, 3, 576, {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}},
  };
  const int rates[4][3] = {{11025, 12000, 8000}, {}, {22050, 24000, 16000}, {44100, 48000, 32000}};
  for (const Column& column : columns) {
    for (const int version : column.versions) {
      for (int index = 1; index <= 14; ++index) {
        for (int rate = 0; rate < 3; ++rate) {
          const int hertz = rates[version][rate];
          const int bits = column.kbits[index - 1] * 1000;
          const int slot = column.layer == 1 ? 4 : 1;
          const int length = column.samples / 8 / slot * bits / hertz * slot;
          const std::string expected = std::to_string(hertz) + " " + std::to_string(bits);
          SCOPED_TRACE(expected + " layer " + std::to_string(column.layer));
          for (const bool padded : {false, true}) {
            const std::size_t size = static_cast<std::size_t>(padded ? length + slot : length);
            const std::string one = frame(version, column.layer, index, rate, size, padded);
            EXPECT_EQ(read(one + one), expected);
            EXPECT_EQ(read("x" + one + one.substr(0, 4)), expected);
            EXPECT_EQ(read(one), expected) << "a single frame that ends the file";
            EXPECT_EQ(read(one.substr(0, size - 1)), "none");
          }
        }
      }
    }
  }
}

std::string id3(std::size_t size, int flags = 0) {
  std::string tag = "ID3\x04";
  tag += '\0';
  tag += static_cast<char>(flags);
  for (int shift = 21; shift >= 0; shift -= 7) tag += static_cast<char>(size >> shift & 127U);
  // Whatever looks like audio in a picture is none.
  while (tag.size() < 10 + size) tag += kFrame;
  tag.resize(10 + size);
  return tag + ((flags & 0x10) != 0 ? std::string(10, '3') : "");
}

TEST(ExactMpeg, TagsBeforeTheMusicAreSkipped) {
  const std::string music = frame(kMpeg2, 3, 8, 1, 192);  // 64 kbit/s at 24000 Hz
  const std::string known = "24000 64000";
  for (const std::size_t size : {0U, 1U, 127U, 128U, 4086U, 5000U, 300'000U}) {
    EXPECT_EQ(read(id3(size) + music + music), known) << size;
  }
  EXPECT_EQ(read(id3(5000, 0x10) + music + music), known) << "with a footer";
  EXPECT_EQ(read(id3(5000) + std::string(2000, '\0') + music + music), known) << "padded";
  std::string tags;
  for (int i = 0; i < 8; ++i) tags += id3(600);
  EXPECT_EQ(read(tags + music + music), known);
  EXPECT_EQ(read(tags + id3(600) + music + music), kGood) << "a ninth is searched like music";
  EXPECT_EQ(read(id3(500).substr(0, 400)), "none") << "the tag ends behind the file";
  EXPECT_EQ(read("ID3\x04"), "none");
  // A size with a high bit is no tag.
  std::string no_tag = id3(0);
  no_tag[6] = '\x80';
  EXPECT_EQ(read(no_tag + music + music), known);
}

TEST(ExactMpeg, OnlyAFrameThatAnotherFollowsCounts) {
  const std::string other = frame(kMpeg2, 2, 8, 0, 417);
  EXPECT_EQ(read(kFrame + kFrame), kGood);
  EXPECT_EQ(read("ab" + other.substr(0, 50) + kFrame + kFrame), kGood);
  EXPECT_EQ(read(kFrame + other.substr(0, 300)), "none") << "of another kind";
  EXPECT_EQ(read(kFrame + frame(kMpeg1, 3, 9, 1, 300)), "none") << "at another sampling rate";
  EXPECT_EQ(read(kFrame + frame(kMpeg1, 3, 14, 0, 1044)), kGood) << "the bit rate may vary";
  EXPECT_EQ(read(kFrame + "TAG" + std::string(125, ' ')), kGood);
  EXPECT_EQ(read(kFrame + "APETAGEX" + std::string(60, ' ')), kGood);
  EXPECT_EQ(read(kFrame + "xyz" + kFrame), kGood) << "the second one ends the file";
  EXPECT_EQ(read(kFrame + "xyz"), "none");
}

TEST(ExactMpeg, WhatIsNoHeaderIsNone) {
  const std::string bad[] = {
      frame(1, 3, 9, 0, 417),       frame(kMpeg1, 4, 9, 0, 417),
      frame(kMpeg1, 3, 15, 0, 417), frame(kMpeg1, 3, 0, 0, 417),  // free format
      frame(kMpeg1, 3, 9, 3, 417),  {},
      std::string(40'000, '\xFF'),  std::string("\xFF\xFB\x90", 3),
  };
  for (const std::string& bytes : bad) EXPECT_EQ(read(bytes + bytes), "none");
  // Shifted by half a byte.
  std::string shifted;
  for (std::size_t i = 0; i + 1 < 834; ++i) {
    const std::string twice = kFrame + kFrame;
    const auto high = static_cast<unsigned char>(i == 0 ? 0 : twice[i - 1]);
    shifted += static_cast<char>(high << 4 | static_cast<unsigned char>(twice[i]) >> 4);
  }
  EXPECT_EQ(read(shifted), "none");
}

TEST(ExactMpeg, ReadingIsBounded) {
  EXPECT_EQ(read(std::string(16'383, '.') + kFrame + kFrame), kGood);
  EXPECT_EQ(read(std::string(16'384, '.') + kFrame + kFrame), "none");
  // The largest frame at the last place, confirmed by the last bytes read.
  const std::string largest = frame(kMpeg25, 2, 14, 2, 2881, true);
  EXPECT_EQ(read(std::string(16'383, '.') + largest + largest), "8000 160000");
}

TEST(ExactMpeg, AnyBytesAreReadWithoutHarm) {
  std::mt19937 chance(3);
  for (int round = 0; round < 300; ++round) {
    std::string bytes = round % 2 == 0 ? id3(chance() % 5000) : "";
    for (std::size_t i = chance() % 20'000; i > 0; --i) {
      bytes += chance() % 4 == 0 ? '\xFF' : static_cast<char>(chance());
    }
    bytes.resize(chance() % (bytes.size() + 1));
    const std::string found = read(bytes);
    EXPECT_TRUE(found == "none" || found.find_first_not_of("0123456789 ") == std::string::npos);
  }
}

}  // namespace
}  // namespace velmora
