#include "share/upload_request.h"

#include <gtest/gtest.h>

#include "share/shared_file.h"

namespace velmora {
namespace {

struct RequestCase {
  std::string text;
  double number;
  std::string name;
  std::string agent = " ";
  double client = 0;
  double start = 0;
  double end = 0;
};

TEST(UploadRequestText, MayMissAnyPart) {
  const RequestCase cases[] = {
      {"GET ", 0, ""},
      {"GET /get/", 0, ""},
      {"GET /get/5", 0, ""},
      {"GET /get/5/", 5, ""},
      {"GET /get/5/name", 5, ""},
      {"GET /get/5 HTTP/1.0\r\n", 5, ""},
      {"GET / HTTP/1.0\r\n", 0, ""},
      {"GET /get/-1/x HTTP/1.0", -1, "x"},
      {"GET /get/1.5/x HTTP/1.0", 1.5, "x"},
      {"GET /get/1e9/x HTTP/1.0", 1e9, "x"},
      {"GET /get/one/x HTTP/1.0", 0, "x"},
      {"GET /get/1/a/b HTTP/1.0", 1, "a/b"},
      {"GET /get/1/a HTTP b HTTP/1.0", 1, "a"},
      {"GET /get/1/%20 HTTP/1.0", 1, "%20"},
      {"GET /get/1/x HTTP\r\nUser-Agent: none", 1, "x", "none"},
      {"GET /get/1/x HTTP\r\nUser-Agent: Some \00142 \r\n", 1, "x", "Some ", 42},
      {"GET /get/1/x HTTP\r\nRange: bytes=", 1, "x"},
      {"GET /get/1/x HTTP\r\nRange: bytes=7", 1, "x", " ", 0, 7},
      {"GET /get/1/x HTTP\r\nRange: bytes=7-\r\n", 1, "x", " ", 0, 7},
      {"GET /get/1/x HTTP\r\nRange: bytes=-7\r\n", 1, "x", " ", 0, 0, 7},
      {"GET /get/1/x HTTP\r\nRange: bytes=9999999999-1\r\n", 1, "x", " ", 0, 9999999999.0, 1},
  };
  for (const RequestCase& c : cases) {
    SCOPED_TRACE(c.text);
    const UploadRequest request = parse_upload_request(c.text);
    EXPECT_FALSE(request.not_a_get);
    EXPECT_EQ(request.file_number, c.number);
    EXPECT_EQ(request.file_name, c.name);
    EXPECT_EQ(request.user_agent, c.agent);
    EXPECT_EQ(request.client_number, c.client);
    EXPECT_EQ(request.range_start, c.start);
    EXPECT_EQ(request.range_end, c.end);
  }
  for (const char* text :
       {"", "GET", "get /get/1/x HTTP/1.0\r\n\r\n", "HEAD /", " GET /get/1/x HTTP"}) {
    EXPECT_TRUE(parse_upload_request(text).not_a_get) << text;
  }
}

struct NameCase {
  const char* stored;
  const char* requested;
  bool same;
};

TEST(SharedFileName, MeansTheFileInTheFormsThatClientsAskFor) {
  const NameCase cases[] = {
      {"a.mp3", "a.mp3", true},
      {"a.mp3", "A.mp3", false},
      {"a.mp3", "a.mp3.", false},
      {"a.mp3\00144100\001128000", "a.mp3", true},
      {"a.mp3\00144100\001128000", "a.mp3\00144100\001128000", true},
      {"a.mp3\00144100\001128000", "a.mp3\00144100", false},
      {"readme", "readme", true},
      {"readme", "readme.", true},
      {"readme", "readme..", false},
      {"xmp3\0010\0010", "xmp3.", true},
      {"xmp3\0010\0010", "xmp3\0010\0010.", true},
      {"readme", "", false},
      {"a", "b.", false},
  };
  for (const NameCase& c : cases) {
    SharedFile file;
    file.name = c.stored;
    EXPECT_EQ(names_file(file, c.requested), c.same) << c.stored << " / " << c.requested;
  }
}

}  // namespace
}  // namespace velmora
