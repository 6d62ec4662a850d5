// The upload port's side of HTTP/1.x: what a request says, and the answer for a file of 1000 bytes.
#include "share/http_answer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/http_text.h"

namespace velmora {
namespace {

TEST(HttpRequest, IsToldFromAClassicOne) {
  const struct {
    const char* text;
    bool http;
  } cases[] = {
      {"GET /get/1/a HTTP/1.1\r\n", true},     {"GET /get/1/a HTTP/1.0\n", true},
      {"POST / HTTP/1.1\r\n", true},           {"GET /get/1/a HTTP:/1.0\r\n", false},
      {"GET /get/1/a HTTP/1.1", false},        {"GET /get/1/a HTTP/2.0\r\n", false},
      {"GET /get/1/a HTTP/1.1 \r\n", false},   {"GET /get/1/a\r\nx HTTP/1.1\r\n", false},
      {"GET /get/1/aHTTP/1.1\r\n\r\n", false},
  };
  for (const auto& c : cases) EXPECT_EQ(is_http_request(c.text), c.http) << c.text;
}

TEST(HttpRequest, NamesAFileWithEscapes) {
  const struct {
    const char* line;
    bool understood;
    double number;
    const char* name;
  } cases[] = {
      {"GET /get/12/a%20b+c%C3%A9.mp3", true, 12, "a b+c\xC3\xA9.mp3"},
      {"GET /get/12/a b.mp3", true, 12, "a b.mp3"},
      {"GET /get/12/a?b=%", true, 12, "a"},
      {"GET /get/12/..%2F..%2fetc%2fpasswd", true, 12, "../../etc/passwd"},
      {"HEAD /get/7/%00", true, 7, ""},
      {"GET /get/+7/a", true, 0, "/get/+7/a"},
      {"GET /get/99999999999999999999/a", true, 4611686018427387904.0, "a"},
      {"GET /get/5", true, 0, "/get/5"},
      {"GET /", true, 0, "/"},
      {"GET /get/1/%2", false, 0, ""},
      {"GET /get/1/%zz", false, 0, ""},
      {"GET /get/1/% 1", false, 0, ""},
      {"POST /get/1/a", false, 0, ""},
      {"GET", false, 0, ""},
  };
  for (const auto& c : cases) {
    const HttpRequest request = parse_http_request(std::string(c.line) + " HTTP/1.1\r\n\r\n");
    EXPECT_EQ(request.understood, c.understood) << c.line;
    if (!c.understood) continue;
    EXPECT_EQ(request.file.file_number, c.number) << c.line;
    EXPECT_STREQ(request.file.file_name.c_str(), c.name) << c.line;
    EXPECT_EQ(request.head, c.line[0] == 'H');
  }
}

TEST(HttpAnswer, SendsTheRangeThatWasAskedFor) {
  const std::string whole = "200 OK";
  const struct {
    const char* fields;
    std::string status;
    std::uint64_t begin;
    std::uint64_t end;
  } cases[] = {
      {"", whole, 0, 1000},
      {"Range: bytes=0-\r\n", "206", 0, 1000},
      {"range:bytes=100-\r\n", "206", 100, 1000},
      {"RANGE: BYTES=100-199\r\n", "206", 100, 200},
      {"Range: bytes=999-2000\r\n", "206", 999, 1000},
      {"Range: bytes=-300\r\n", "206", 700, 1000},
      {"Range: bytes=-3000\r\n", "206", 0, 1000},
      {"Range: bytes=0-99999999999999999999999\r\n", "206", 0, 1000},
      {"Range: bytes=1000-\r\n", "416", 0, 0},
      {"Range: bytes=99999999999999999999999-\r\n", "416", 0, 0},
      {"Range: bytes=-0\r\n", "416", 0, 0},
      {"Range: bytes=5-4\r\n", whole, 0, 1000},
      {"Range: bytes=0-1,5-6\r\n", whole, 0, 1000},
      {"Range: bytes=-\r\n", whole, 0, 1000},
      {"Range: bytes=a-b\r\n", whole, 0, 1000},
      {"Range: lines=1-2\r\n", whole, 0, 1000},
      {"Range: bytes=1-2\r\nIf-Range: \"x\"\r\n", whole, 0, 1000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fields);
    const auto request =
        parse_http_request("GET /get/1/a HTTP/1.1\r\nHost: x\r\n" + std::string(c.fields) + "\r\n");
    const HttpAnswer answer = http_answer(request, 1000);
    EXPECT_THAT(answer.header, testing::StartsWith("HTTP/1.1 " + c.status));
    EXPECT_EQ(http_header_length(answer.header), answer.header.size());
    EXPECT_EQ(answer.has_file, c.status != "416");
    const std::string length = std::to_string(c.end - c.begin);
    EXPECT_EQ(http_field(answer.header, "Content-Length"), length);
    if (c.status == "416") {
      EXPECT_EQ(http_field(answer.header, "Content-Range"), "bytes */1000");
      continue;
    }
    EXPECT_EQ(answer.begin, c.begin);
    EXPECT_EQ(answer.end, c.end);
    EXPECT_EQ(http_field(answer.header, "Accept-Ranges"), "bytes");
    EXPECT_EQ(http_field(answer.header, "Connection"), "close");
    const auto range = http_field(answer.header, "Content-Range");
    EXPECT_EQ(range.value_or("none"), c.status == "206" ? "bytes " + std::to_string(c.begin) + "-" +
                                                              std::to_string(c.end - 1) + "/1000"
                                                        : "none");
  }
}

TEST(HttpAnswer, RefusesWithABodyUnlessTheHeaderAloneWasWanted) {
  const std::string busy = http_refusal(HttpRefusal::busy, "later", false);
  EXPECT_THAT(busy, testing::StartsWith("HTTP/1.1 503 Service Unavailable\r\nRetry-After: 30\r\n"));
  EXPECT_THAT(busy, testing::EndsWith("Content-Length: 6\r\n\r\nlater\n"));
  const std::string head = http_refusal(HttpRefusal::not_found, "no", true);
  EXPECT_THAT(head, testing::EndsWith("Content-Length: 3\r\n\r\n"));
}

TEST(HttpText, EscapesComeBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  const std::string escaped = with_escapes(all);
  EXPECT_EQ(escaped.find_first_of(" /?#\r\n\""), std::string::npos);
  EXPECT_EQ(without_escapes(escaped), all);
  EXPECT_EQ(with_escapes("a b-c_d.e~f"), "a%20b-c_d.e~f");
}

}  // namespace
}  // namespace velmora
