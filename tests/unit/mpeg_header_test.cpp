#include "media/mpeg_header.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/doubles.h"

namespace velmora {
namespace {

struct Reading {
  std::string frequency;
  std::string bitrate;
  std::vector<std::string> lines;
};

Reading read(std::string_view start) {
  Lines log;
  Mp3Info info{.frequency = "before", .bitrate = "before"};
  Get_mp3_info(start, info, log);
  return {info.frequency, info.bitrate, log.lines};
}

// A frame header that begins at a byte; version and layer as their bits.
std::string frame(int version, int layer, int bitrate_index, int frequency_index) {
  return bytes(
      {0xFF, 0xF1 | version << 3 | layer << 1, bitrate_index << 4 | frequency_index << 2, 0x44});
}

void expect_reading(const std::string& start, const char* bitrate, const char* frequency) {
  const Reading reading = read(start);
  EXPECT_EQ(reading.bitrate, bitrate);
  EXPECT_EQ(reading.frequency, frequency);
  EXPECT_TRUE(reading.lines.empty());
}

void expect_failure(const std::string& start) {
  const Reading reading = read(start);
  EXPECT_EQ(reading.bitrate, "before");
  EXPECT_EQ(reading.frequency, "before");
  EXPECT_EQ(reading.lines,
            std::vector<std::string>{"Get_mp3_info: Invalid procedure call or argument"});
}

// Rows by bitrate index as published, kbit/s.
TEST(MpegHeader, EveryBitrateOfEveryVersionAndLayer) {
  struct Column {
    int version;
    int layer;
    int kbits[16];
  };
  const Column columns[] = {
      {1, 3, {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0}},
      {1, 2, {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0}},
      {1, 1, {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0}},
      {0, 3, {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0}},
      {0, 2, {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}},
      {0, 1, {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}},
      {1, 0, {}},
      {0, 0, {}},
  };
  for (const Column& column : columns) {
    for (int index = 0; index < 16; ++index) {
      SCOPED_TRACE(std::to_string(column.version) + " " + std::to_string(column.layer) + " " +
                   std::to_string(index));
      const int kbits = column.kbits[index];
      expect_reading(frame(column.version, column.layer, index, 0),
                     kbits == 0 ? "0" : (std::to_string(kbits) + "000").c_str(),
                     column.version == 1 ? "44100" : "22050");
    }
  }
}

TEST(MpegHeader, OnlyTheFirstFrequencyIsFound) {
  for (int version = 0; version < 2; ++version) {
    for (int index = 1; index < 4; ++index) {
      expect_reading(frame(version, 1, 8, index), version == 1 ? "112000" : "64000", "0");
    }
  }
}

TEST(MpegHeader, LooksForTheFirstSync) {
  const std::string mp3 = bytes({0xFF, 0xFB, 0x90, 0x00});
  expect_reading(mp3 + "more", "128000", "44100");
  expect_reading("ID3" + bytes({0xFF, 0xE0, 0xFF}) + "tag" + mp3, "128000", "44100");
  expect_reading(mp3 + frame(0, 1, 8, 0), "128000", "44100");
  // The last place where a whole header fits.
  expect_reading(std::string(kMpegBytesRead - 4, '.') + mp3, "128000", "44100");
}

TEST(MpegHeader, ASyncWithinAByteReadsUnshiftedBytes) {
  // x F F F x: the fields come from the two bytes behind the one that is all set.
  expect_reading(bytes({0x1F, 0xFF, 0xB9, 0x00}), "128000", "44100");
  expect_reading(bytes({0x1F, 0xFF, 0xB9, 0x40}), "128000", "0");
  // In front of an ordinary sync it comes first, and its fields are the ordinary bytes.
  expect_reading(bytes({0x2F, 0xFF, 0xFB, 0x90, 0x00}), "352000", "0");
}

TEST(MpegHeader, WithoutAWholeHeaderNothingIsSet) {
  expect_failure("");
  expect_failure("x");
  expect_failure(std::string(kMpegBytesRead, '\xFE'));
  expect_failure(bytes({0xFF}));
  expect_failure(bytes({0xFF, 0xFB}));
  expect_failure(bytes({0xFF, 0xFB, 0x90}));
  expect_failure(bytes({0x1F, 0xFF, 0xB9}));
  // Cut by the end of what is read.
  const std::string mp3 = bytes({0xFF, 0xFB, 0x90, 0x00});
  expect_failure(std::string(kMpegBytesRead - 3, '.') + mp3);
  expect_failure(std::string(kMpegBytesRead, '.') + mp3);
}

}  // namespace
}  // namespace velmora
