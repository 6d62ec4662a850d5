#include "protocol/payloads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/conversions.h"
#include "support/doubles.h"

namespace velmora {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kGuidAtEnd = "Str_to_query_reply: GUID IS at end";
constexpr const char* kNoGuid = "Str_to_query_reply: GUID not at end";
constexpr const char* kShortNumber = "Str_to_Dword: Invalid procedure call or argument";
constexpr const char* kGuid = "0123456789abcdef";

const std::string kPongBytes = bytes({0xCA, 0x18, 0x0A, 0, 0, 1, 5, 0, 0, 0, 0x64, 0, 0, 0});
// Port 6346, 1.2.3.4, 56 kbit/s.
std::string hit_start(int hits) { return bytes({hits, 0xCA, 0x18, 1, 2, 3, 4, 56, 0, 0, 0}); }
std::string entry(int index, int size, std::string_view name) {
  return bytes({index, 0, 0, 0, size, 0, 0, 0}).append(name).append(2, '\0');
}

struct Decoded {
  std::shared_ptr<const std::string> payload;  // the names lie in it
  QueryHit hit;
  Texts lines;
};
Decoded decode(const std::string& payload, double claimed) {
  Lines log;
  DescriptorHeader header;
  header.payload_length = static_cast<float>(claimed);
  const auto kept = std::make_shared<const std::string>(payload);
  QueryHit hit = str_to_query_reply(header, *kept, log);
  return {kept, std::move(hit), std::move(log.lines)};
}
Decoded decode(const std::string& payload) {
  return decode(payload, static_cast<double>(payload.size()));
}

TEST(Pong, WhatIsShortOrTooLargeIsReportedByItsField) {
  const std::string wrong_length = "Error: str_to_pong: length wrong, no header please";
  const std::string call = "Invalid procedure call or argument";
  struct Case {
    std::string payload;
    Texts lines;
    bool read;
    int port;
    const char* address;
    float files;
  };
  for (const Case& c : std::vector<Case>{
           {"", {wrong_length, "Error: str_to_pong: Port " + call}, false, 7, "x", 9},
           {kPongBytes.substr(0, 5),
            {wrong_length, "Error: str_to_pong: IP " + call},
            false,
            6346,
            "x",
            9},
           {kPongBytes.substr(0, 8),
            {wrong_length, kShortNumber, kShortNumber},
            true,
            6346,
            "10.0.0.1",
            0},
           {kPongBytes.substr(0, 12), {wrong_length, kShortNumber}, true, 6346, "10.0.0.1", 5},
           {kPongBytes + "more", {wrong_length}, true, 6346, "10.0.0.1", 5},
           {bytes({0, 0x80}) + kPongBytes.substr(2),
            {"Error: str_to_pong: Port Overflow"},
            false,
            7,
            "x",
            9}}) {
    Lines log;
    Pong pong{.port = 7, .address = "x", .files = 9, .kilobytes = 9};
    EXPECT_EQ(str_to_pong(c.payload, pong, log), c.read);
    EXPECT_EQ(log.lines, c.lines);
    EXPECT_EQ(pong.port, c.port);
    EXPECT_EQ(pong.address, c.address);
    EXPECT_EQ(pong.files, c.files);
  }
}

TEST(QueryHit, EncodingEndsWhereTheResultsEnd) {
  Lines log;
  QueryHit hit;
  hit.hits = 2;
  hit.address = "1.2.3.4";
  hit.results = {{1, 1, "a"}};
  EXPECT_EQ(query_reply_to_str(hit, log),
            bytes({2, 0, 0, 1, 2, 3, 4, 0, 0, 0, 0}) + entry(1, 1, "a"));
  EXPECT_EQ(log.lines, Texts{"Query_reply_to_str: Subscript out of range"});
}

TEST(QueryHit, NamesEndAtTheFirstPairOfZeros) {
  struct Case {
    std::string rest;
    int claimed;
    Texts names;
    bool guid;
  };
  const std::string zero(1, '\0');
  for (const Case& c :
       std::vector<Case>{{entry(1, 1, "a") + kGuid, 1, {"a"}, true},
                         {entry(1, 1, "a" + zero + "b") + kGuid, 1, {"a" + zero + "b"}, true},
                         // The search starts behind the two numbers, zeros in them are no pair.
                         {entry(0, 0, "") + kGuid, 1, {""}, true},
                         {entry(1, 1, "a") + entry(2, 2, "b") + kGuid, 1, {"a"}, false},
                         // The rest begins behind the pair, whatever comes there.
                         {entry(1, 1, "a") + zero + kGuid, 1, {"a"}, false},
                         {entry(1, 1, "a"), 3, {"a"}, false},
                         {entry(1, 1, "a") + kGuid, 3, {"a"}, true},
                         {entry(1, 1, "a") + std::string(kGuid).substr(1), 3, {"a"}, false},
                         {entry(1, 1, "a") + entry(2, 2, "b").substr(0, 10), 3, {"a"}, false},
                         {kGuid, 0, {}, true},
                         {"", 0, {}, false}}) {
    const Decoded back = decode(hit_start(c.claimed) + c.rest);
    Texts names;
    for (const QueryHitResult& result : back.hit.results) names.emplace_back(result.file_name);
    EXPECT_EQ(names, c.names);
    EXPECT_EQ(back.hit.hits, c.names.size());
    EXPECT_EQ(back.lines.back(), c.guid ? kGuidAtEnd : kNoGuid);
    EXPECT_EQ(back.hit.servent_guid, c.guid ? kGuid : std::string(16, ' '));
  }
}

TEST(QueryHit, WhatIsShortIsReportedAndKeptAsFarAsItWasRead) {
  const std::string whole = hit_start(1) + entry(7, 9, "name") + kGuid;
  const std::string bad_call = "Error: str_to_query_reply: 1 Invalid procedure call or argument";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    Texts expected;
    if (length < 7) {
      expected = {bad_call};
    } else {
      for (const std::size_t end : {11U, 15U, 19U}) {
        if (length < end) expected.emplace_back(kShortNumber);
      }
      // 16 bytes may also be what is left of an entry that has no end.
      const std::size_t rest =
          length < 25 ? length - std::min<std::size_t>(length, 11) : length - 25;
      expected.emplace_back(rest == 16 ? kGuidAtEnd : kNoGuid);
    }
    // Cut by the chunk, and cut by the header's length.
    for (const Decoded& back : {decode(whole.substr(0, length), static_cast<double>(whole.size())),
                                decode(whole, static_cast<double>(length))}) {
      EXPECT_EQ(back.lines, expected);
      EXPECT_EQ(back.hit.results.size(), length < 25 ? 0U : 1U);
      EXPECT_EQ(back.hit.port, length < 3 ? 0 : 6346);
      EXPECT_EQ(back.hit.address, length < 7 ? "" : "1.2.3.4");
      EXPECT_EQ(back.hit.speed, length < 11 ? 0 : 56);
      if (length >= 7) {
        EXPECT_EQ(back.hit.hits, back.hit.results.size());
      }
    }
  }
  EXPECT_EQ(decode(whole, -1).lines, Texts{bad_call});
  const Decoded overflow = decode(bytes({1, 0, 0x80}) + whole.substr(3));
  EXPECT_EQ(overflow.lines, Texts{"Error: str_to_query_reply: 1 Overflow"});
  EXPECT_TRUE(overflow.hit.results.empty());
}

TEST(QueryHit, AsManyResultsAsAByteCounts) {
  std::string payload = hit_start(255);
  for (int i = 0; i < 255; ++i) payload += entry(i, 1, std::string(110, 'n'));
  const Decoded back = decode(payload + kGuid);
  EXPECT_EQ(back.hit.hits, 255);
  ASSERT_EQ(back.hit.results.size(), 255U);
  EXPECT_EQ(back.hit.results.back().file_index, 254);
  EXPECT_EQ(back.lines, Texts{kGuidAtEnd});
}

TEST(Query, TextIsWhatTheHeaderClaimsAsFarAsItIsThere) {
  const std::string payload = query_to_str(-1, "abc");
  EXPECT_EQ(payload, std::string("\xFF\xFF"
                                 "abc\0",
                                 6));
  const std::string descriptor = std::string(23, 'h') + payload;
  const std::string zero(1, '\0');
  struct Case {
    std::string descriptor;
    float length;
    std::string text;
  };
  for (const Case& c : std::vector<Case>{{descriptor, 6, "abc"},
                                         {descriptor, 5, "abc"},
                                         {descriptor, 3, "a"},
                                         {descriptor, 7, "abc"},
                                         {descriptor + zero, 8, "abc" + zero},
                                         {descriptor + "more", 10, "abc" + zero + "more"},
                                         {descriptor.substr(0, 27), 6, "ab"},
                                         {descriptor.substr(0, 25), 6, ""},
                                         {descriptor.substr(0, 23), 6, ""}}) {
    DescriptorHeader header;
    header.payload_length = c.length;
    EXPECT_EQ(query_text(header, c.descriptor), c.text) << c.length;
  }
  for (const float length : {0.0F, 1.0F, 2.0F}) {
    DescriptorHeader header;
    header.payload_length = length;
    EXPECT_THROW(query_text(header, descriptor), PlatformError) << length;
  }
}

}  // namespace
}  // namespace velmora
