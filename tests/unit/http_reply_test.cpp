#include "transfer/http_reply.h"

#include <gtest/gtest.h>

#include <string>

#include "support/doubles.h"
#include "transfer/download_request.h"
#include "transfer/stop_message.h"

namespace velmora {
namespace {

TEST(HttpReply, OnlyTheUploadServersOwnStatusLineIsRecognised) {
  EXPECT_TRUE(is_reply_header("HTTP 200 OK\r\n"));
  for (const char* block : {"HTTP/1.1 200 OK\r\n", "HTTP 200 OK\n", "HTTP 200 OK",
                            " HTTP 200 OK\r\n", "http 200 ok\r\n", ""}) {
    EXPECT_FALSE(is_reply_header(block)) << block;
  }
  EXPECT_EQ(reply_header_length("HTTP 200 OK\r\n\r\nabc"), 15U);
  EXPECT_EQ(reply_header_length("HTTP 200 OK\r\nServer: x\r\n"), 0U);
}

TEST(HttpReply, LengthsAreNumbersOfBytesThatAFileCanHave) {
  const auto length = [](const std::string& text) {
    return parse_http_reply("HTTP 200 OK\r\nContent-length: " + text + "\r\n\r\n").content_length;
  };
  const auto error = [&](const std::string& text) { return error_of([&] { length(text); }); };
  EXPECT_EQ(length("0"), 0U);
  EXPECT_EQ(length("4294967296"), 4294967296U);
  EXPECT_EQ(length("9007199254740992"), 9007199254740992U);
  EXPECT_EQ(error("9007199254740994"), "Overflow");
  EXPECT_EQ(error("1e30"), "Overflow");
  EXPECT_EQ(error("-1"), "Overflow");
  EXPECT_EQ(error("many"), "Type mismatch");
  EXPECT_EQ(error(""), "Type mismatch");
  EXPECT_THROW(parse_http_reply("HTTP 200 OK\r\nContent-length: 12"), PlatformError);
  EXPECT_EQ(parse_http_reply("HTTP 200 OK\r\n\r\n").content_length, std::nullopt);
}

TEST(StopMessage, IsFoundOnlyWholeAndAtTheEnd) {
  struct Case {
    const char* block;
    std::size_t begin;
    const char* text;  // null: no message
  };
  const Case cases[] = {
      {"VelMora-Stop: 3\r\nbye", 0, "bye"},
      {"dataVelMora-Stop: 0\r\n", 4, ""},
      {"dataVelMora-Stop: 4\r\na\r\nb", 4, "a\r\nb"},
      {"VelMora-Stop: 20\r\nVelMora-Stop: 2\r\nhi!", 0, "VelMora-Stop: 2\r\nhi!"},
      {"VelMora-Stop: 9\r\nVelMora-Stop: 2\r\nhi", 17, "hi"},
      {"VelMora-Stop: 3\r\nby", 0, nullptr},
      {"VelMora-Stop: 3\r\nbye!", 0, nullptr},
      {"VelMora-Stop: -3\r\nbye", 0, nullptr},
      {"VelMora-Stop:  3\r\nbye", 0, nullptr},
      {"VelMora-Stop: 3\nbye", 0, nullptr},
      {"VelMora-Stop: 99999999999999999999999\r\nbye", 0, nullptr},
      {"VelMora-Stop: ", 0, nullptr},
      {"", 0, nullptr},
  };
  for (const Case& c : cases) {
    const auto found = find_stop_message(c.block);
    ASSERT_EQ(found.has_value(), c.text != nullptr) << c.block;
    if (!found) continue;
    EXPECT_EQ(found->begin, c.begin) << c.block;
    EXPECT_EQ(found->text, c.text) << c.block;
  }

  // Behind a large block one of some kilobytes is found; one of 16 KiB is taken for data.
  const std::string data(300000, 'V');
  const auto behind_data = [&](std::size_t length) {
    return data + "VelMora-Stop: " + std::to_string(length) + "\r\n" + std::string(length, 't');
  };
  const std::string block = behind_data(15000);
  const auto found = find_stop_message(block);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->begin, data.size());
  EXPECT_EQ(found->text.size(), 15000);
  EXPECT_FALSE(find_stop_message(behind_data(16384)));
}

TEST(DownloadRequest, IsByteForByte) {
  DownloadRecord record;
  record.file_index = 17;
  record.name = "my song";
  record.extension = "mp3";
  record.size = "5000000000";
  record.bytes_received = 4294967297;
  EXPECT_EQ(download_request(record, "0.1.0", "6345"),
            "GET /get/17/my song.mp3 HTTP:/1.0\r\n"
            "User-Agent: VelMora 0.1.0:6345\r\n"
            "Connection: Keep-Alive\r\n"
            "Range: bytes=4294967297-5000000000\r\n\r\n");
  EXPECT_TRUE(can_be_requested(record));
  record.extension = "mp3\r\nX: y";
  EXPECT_FALSE(can_be_requested(record));
}

// Above 16 MiB two different sizes look alike in single precision.
TEST(DownloadRecord, IsCompleteOnlyWhenTheExactCountsAgree) {
  DownloadRecord record;
  record.size = "16777217";
  record.bytes_received = 16777216;
  EXPECT_EQ(record.bytes_received_single(), 16777217.0F);
  EXPECT_FALSE(record.complete());
  record.bytes_received = 16777217;
  EXPECT_TRUE(record.complete());
}

}  // namespace
}  // namespace velmora
