#include "transfer/standard_reply.h"

#include <gtest/gtest.h>

#include "transfer/standard_request.h"

namespace velmora {
namespace {

constexpr std::uint64_t kTold = 16'777'216;  // from here on an answer rounds the sizes it tells

TEST(StandardReply, IsToldFromAClassicOne) {
  const struct {
    const char* bytes;
    ReplyKind kind;
  } cases[] = {
      {"HTTP/1.1 200 OK", ReplyKind::standard}, {"HTTP/", ReplyKind::standard},
      {"HTTP", ReplyKind::undecided},           {"H", ReplyKind::undecided},
      {"HTTP 200 OK\r\n", ReplyKind::classic},  {"<html>", ReplyKind::page},
      {"That filenum (1)", ReplyKind::classic}, {"http/1.1", ReplyKind::classic},
  };
  for (const auto& c : cases) EXPECT_EQ(kind_of_reply(c.bytes), c.kind) << c.bytes;
}

struct Case {
  const char* header;
  std::uint64_t start;
  std::uint64_t known;
  const char* refusal;
  std::uint64_t size = 0;
  std::uint64_t from = 0;
  std::uint64_t skip = 0;
  bool other = false;
};

TEST(StandardReply, TellsWhereItsBytesBelong) {
  const Case cases[] = {
      {"200 OK\r\nContent-Length: 10", 0, 10, "", 10},
      {"200 OK\r\ncontent-length:10", 0, 999, "", 10},
      {"200 OK\r\nContent-Length: 10", 4, 10, "", 10, 4, 4},
      {"200 OK\r\nContent-Length: 10", 4, 11, "", 10, 0, 0},
      {"200 OK\r\nContent-Length: 10", 11, 0, "", 10, 0, 0},
      {"200 OK\r\nContent-Length: 16777217", 4, kTold, "", 16777217, 4, 4},
      {"200 OK", 0, 10, "No length told"},
      {"200 OK\r\nContent-Length: ten", 0, 10, "No length told"},
      {"200 OK\r\nContent-Length: 9007199254740993", 0, 10, "No length told"},
      {"206 x\r\nContent-Range: bytes 4-9/10", 4, 10, "", 10, 4},
      {"206 x\r\nContent-Range: bytes 0-9/10", 0, 77, "", 10, 0},
      {"206 x\r\nContent-Range: bytes 4-9/*", 4, 0, "", 10, 4},
      {"206 x\r\ncontent-range: Bytes 4-16777216/16777217", 4, kTold, "", 16777217, 4},
      {"206 x\r\nContent-Range: bytes 4-9/10", 4, 12, "The file has changed", 10, 4, 0, true},
      {"206 x\r\nContent-Range: bytes 3-9/10", 4, 10, "Another part was sent", 0, 4},
      {"206 x\r\nContent-Range: bytes 4-8/10", 4, 10, "Another part was sent", 0, 4},
      {"206 x\r\nContent-Range: bytes 4-3/4", 4, 10, "Another part was sent", 0, 4},
      {"206 x\r\nContent-Range: lines 4-9/10", 4, 10, "Another part was sent", 0, 4},
      {"206 x", 4, 10, "Another part was sent", 0, 4},
      {"416 x\r\nContent-Range: bytes */10", 10, 10, "", 10, 10},
      {"416 x\r\nContent-Range: bytes */9", 10, 10, "The file has changed", 9, 10, 0, true},
      {"416 x\r\nContent-Range: bytes */11", 10, 10, "Nothing more to fetch (416)", 11, 10},
      {"416 x", 10, 10, "Nothing more to fetch (416)", 0, 10},
      {"200 OK\r\nTransfer-Encoding: chunked", 0, 10, "Sent in a form that is not understood"},
      {"200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 5", 0, 10,
       "Sent in a form that is not understood"},
      {"200 OK\r\nContent-Encoding: identity\r\nContent-Length: 5", 0, 10, "", 5},
      {"404 Not Found", 0, 10, "Not found (404)"},
      {"403 x", 0, 10, "Not allowed (403)"},
      {"503 x", 0, 10, "Busy, try later (503)"},
      {"301 x\r\nLocation: /", 0, 10, "Moved (301)"},
      {"400 x", 0, 10, "Refused (400)"},
      {"OK", 0, 10, "No HTTP OK!"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.header) + " from " + std::to_string(c.start));
    const StandardReply reply =
        read_standard_reply("HTTP/1.1 " + std::string(c.header) + "\r\n\r\n", c.start, c.known);
    EXPECT_EQ(reply.refusal, c.refusal);
    EXPECT_EQ(reply.file_is_other, c.other);
    if (*c.refusal != '\0') continue;
    EXPECT_EQ(reply.size, c.size);
    EXPECT_EQ(reply.start, c.from);
    EXPECT_EQ(reply.skip, c.skip);
  }
}

TEST(StandardRequest, IsWhatWebServersTake) {
  DownloadRecord record;
  record.file_index = 5;
  record.name = "my song/\xC3\xA9";
  record.extension = "mp3";
  EXPECT_EQ(standard_request(record, 0, {"10.0.0.2", 80}, "0.1.0", "6345"),
            "GET /get/5/my%20song%2F%C3%A9.mp3 HTTP/1.1\r\nHost: 10.0.0.2\r\n"
            "User-Agent: VelMora 0.1.0:6345\r\nConnection: close\r\n\r\n");
  record.name = "README";
  record.extension.clear();
  EXPECT_EQ(standard_request(record, 7, {"files.example", 8080}, "0.1.0", "6345"),
            "GET /get/5/README HTTP/1.1\r\nHost: files.example:8080\r\n"
            "User-Agent: VelMora 0.1.0:6345\r\nRange: bytes=7-\r\nConnection: close\r\n\r\n");
}

}  // namespace
}  // namespace velmora
