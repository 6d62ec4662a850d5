// The examples of docs/PROTOCOL.md, read from the document: what it shows as bytes is what the
// codecs write, and what they read from those bytes is what it says beside them.
#include <gtest/gtest.h>

#include <cctype>
#include <deque>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/debug_log.h"
#include "platform/number.h"
#include "protocol/conversions.h"
#include "protocol/descriptor_header.h"
#include "protocol/payloads.h"
#include "share/upload_request.h"
#include "transfer/download_record.h"
#include "transfer/download_request.h"
#include "transfer/http_reply.h"
#include "transfer/stop_message.h"

namespace velmora {
namespace {

struct NoLog : DebugLog {
  void debug_log(std::string_view) override {}
};

using Lines = std::vector<std::string>;

// The fenced blocks of one kind, in order.
std::vector<Lines> blocks(const std::string& kind) {
  std::ifstream document(VELMORA_DOCS "/PROTOCOL.md");
  EXPECT_TRUE(document) << VELMORA_DOCS;
  std::vector<Lines> found;
  bool inside = false;
  for (std::string line; std::getline(document, line);) {
    if (inside && line == "```") {
      inside = false;
    } else if (inside) {
      found.back().push_back(line);
    } else if (line == "```" + kind) {
      inside = true;
      found.emplace_back();
    }
  }
  return found;
}

std::string with_crlf(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text + "\r\n";
}

// One descriptor as the document shows it: its bytes, and the value beside each field's name.
struct Example {
  std::string bytes;
  std::vector<std::pair<std::string, std::string>> fields;

  explicit Example(const Lines& lines) {
    for (const std::string& line : lines) {
      std::istringstream words(line);
      std::string word;
      while (words >> word && word.size() == 2 && std::isxdigit(word[0]) != 0 &&
             std::isxdigit(word[1]) != 0) {
        bytes += static_cast<char>(std::stoi(word, nullptr, 16));
      }
      std::string value;
      words >> value;
      fields.emplace_back(word, value);
    }
  }

  // The n-th value under this name.
  [[nodiscard]] std::string text(const std::string& name, std::size_t n = 0) const {
    for (const auto& [field, value] : fields) {
      if (field == name && n-- == 0) return value;
    }
    ADD_FAILURE() << "no field " << name;
    return "0";
  }
  [[nodiscard]] float number(const std::string& name, std::size_t n = 0) const {
    return std::stof(text(name, n));
  }
  [[nodiscard]] std::int16_t port() const { return to_port(std::stod(text("port"))); }
};

std::string encoded_payload(const Example& example, DebugLog& log) {
  const int function = static_cast<int>(example.number("function"));
  if (function == kPong) {
    return pong_to_str({example.port(), example.text("address"), example.number("files"),
                        example.number("kilobytes")},
                       log);
  }
  if (function == kQuery) {
    return query_to_str(to_int16(example.number("speed")), example.text("text"));
  }
  if (function != kQueryHit) return {};
  QueryHit hit;
  hit.hits = to_byte(example.number("hits"));
  hit.port = example.port();
  hit.address = example.text("address");
  hit.speed = example.number("speed");
  std::deque<std::string> names;
  for (std::size_t i = 0; i < hit.hits; ++i) {
    names.push_back(example.text("name", i));
    hit.results.push_back({example.number("index", i), example.number("size", i), names.back()});
  }
  hit.servent_guid = example.text("servent");
  return query_reply_to_str(hit, log);
}

TEST(ProtocolDocument, ShowsWhatTheEncodersWrite) {
  NoLog log;
  std::map<int, int> seen;
  for (const Lines& lines : blocks("descriptor")) {
    const Example example(lines);
    SCOPED_TRACE(example.text("function"));
    DescriptorHeader header;
    header.guid = example.text("guid");
    header.function = to_byte(example.number("function"));
    header.ttl = to_byte(example.number("ttl"));
    header.hops = to_byte(example.number("hops"));
    header.payload_length = example.number("length");
    EXPECT_EQ(header_to_str(header, log) + encoded_payload(example, log), example.bytes);
    EXPECT_EQ(kHeaderSize + static_cast<std::size_t>(header.payload_length), example.bytes.size());
    ++seen[header.function];
  }
  EXPECT_EQ(seen, (std::map<int, int>{{kPing, 1}, {kPong, 1}, {kQuery, 1}, {kQueryHit, 1}}));
}

TEST(ProtocolDocument, SaysWhatTheDecodersRead) {
  NoLog log;
  for (const Lines& lines : blocks("descriptor")) {
    const Example example(lines);
    const DescriptorHeader header = str_to_header(example.bytes);
    const std::string payload = example.bytes.substr(kHeaderSize);
    EXPECT_EQ(header.guid, example.text("guid"));
    EXPECT_EQ(header.payload_length, example.number("length"));
    if (header.function == kPong) {
      Pong pong;
      EXPECT_TRUE(str_to_pong(payload, pong, log));
      EXPECT_EQ(pong.port, example.port());
      EXPECT_EQ(pong.address, example.text("address"));
      EXPECT_EQ(pong.files, example.number("files"));
      EXPECT_EQ(pong.kilobytes, example.number("kilobytes"));
    } else if (header.function == kQuery) {
      EXPECT_EQ(query_text(header, example.bytes), example.text("text"));
    } else if (header.function == kQueryHit) {
      const QueryHit hit = str_to_query_reply(header, payload, log);
      ASSERT_EQ(hit.hits, example.number("hits"));
      EXPECT_EQ(hit.address, example.text("address"));
      EXPECT_EQ(hit.servent_guid, example.text("servent"));
      for (std::size_t i = 0; i < hit.hits; ++i) {
        EXPECT_EQ(hit.results[i].file_index, example.number("index", i));
        EXPECT_EQ(hit.results[i].file_size, example.number("size", i));
        EXPECT_EQ(hit.results[i].file_name, example.text("name", i));
      }
    }
  }
}

TEST(ProtocolDocument, MakesItsIdentifiersFromTheClock) {
  LocalTime five_past_one;
  five_past_one.hour = 13;
  five_past_one.minute = 5;
  five_past_one.second = 7;
  EXPECT_EQ(Example(blocks("descriptor").at(0)).text("guid"), GetGUID(five_past_one));
}

TEST(ProtocolDocument, ShowsTheRequestThatADownloadSends) {
  const std::string text = with_crlf(blocks("request").at(0));
  DownloadRecord record;
  record.name = "abcd";
  record.extension = "ogg";
  record.size = "2000000";
  record.file_index = 2;
  record.bytes_received = 500000;
  EXPECT_EQ(download_request(record, "0.1.0", "6345"), text);
  const UploadRequest request = parse_upload_request(text);
  EXPECT_FALSE(request.not_a_get);
  EXPECT_EQ(request.file_number, 2);
  EXPECT_EQ(request.file_name, "abcd.ogg");
  EXPECT_EQ(request.range_start, 500000);
}

TEST(ProtocolDocument, ShowsAReplyAndAStopMessageThatADownloadReads) {
  const std::string reply = with_crlf(blocks("reply").at(0));
  ASSERT_TRUE(is_reply_header(reply));
  EXPECT_EQ(reply_header_length(reply), reply.size());
  EXPECT_EQ(parse_http_reply(reply).server, "Velmora");
  EXPECT_EQ(parse_http_reply(reply).content_length, 2000000U);

  const Lines frame = blocks("stop").at(0);
  const std::string block = frame.at(0) + "\r\n" + frame.at(1);
  const auto stop = find_stop_message(block);
  ASSERT_TRUE(stop);
  EXPECT_EQ(stop->text, frame.at(1));
}

}  // namespace
}  // namespace velmora
