#include "protocol/framing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "protocol/payloads.h"
#include "support/wire.h"

namespace velmora {
namespace {

// Everything that the framing does, in order: its lines as they are, calls in brackets.
struct Recorder : DescriptorHandlers, DebugLog {
  void debug_log(std::string_view text) override { events.emplace_back(text); }
  void count_received(std::size_t connection) override {
    EXPECT_EQ(connection, 3U);
    events.emplace_back("[received]");
  }
  void got_ping(const DescriptorHeader& header, std::string_view data, std::size_t at) override {
    got("ping", header, data, at);
  }
  void got_pong(const DescriptorHeader& header, std::string_view data, std::size_t at) override {
    got("pong", header, data, at);
  }
  void got_query(const DescriptorHeader& header, std::string_view data, std::size_t at) override {
    got("query", header, data, at);
  }
  void got_query_reply(const DescriptorHeader& header, std::string_view data,
                       std::size_t at) override {
    got("query hit", header, data, at);
  }
  void got_push(const DescriptorHeader& header, std::string_view data, std::size_t at) override {
    got("push", header, data, at);
  }
  void got_unknown(const DescriptorHeader& header, std::size_t at) override {
    got("unknown " + std::to_string(header.function), header, "", at);
  }
  void got(const std::string& kind, const DescriptorHeader& header, std::string_view data,
           std::size_t connection) {
    EXPECT_EQ(connection, 3U);
    const bool known = !kind.starts_with("unknown");
    events.push_back("[" + kind + " " + std::to_string(static_cast<int>(header.payload_length)) +
                     (known ? " of " + std::to_string(data.size()) : "") + "]");
    if (known) {
      EXPECT_EQ(header.guid, data.substr(0, 16));
    }
    if (on_descriptor) on_descriptor();
  }

  std::vector<std::string> events;
  std::function<void()> on_descriptor;
};

using Events = std::vector<std::string>;

unsigned at(const std::string& text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

// The lines that decoding a text of `text.size()` bytes as a query hit writes.
Events hit_lines(std::string text, std::size_t claimed) {
  text.resize(std::min(text.size(), claimed));
  const std::string error = "Error: str_to_query_reply: 1 ";
  if (text.size() < 3) return {error + "Invalid procedure call or argument"};
  if (at(text, 2) > 127) return {error + "Overflow"};
  if (text.size() < 7) return {error + "Invalid procedure call or argument"};
  Events lines;
  const auto number = [&](std::size_t position) {
    if (position + 4 > text.size()) {
      lines.emplace_back("Str_to_Dword: Invalid procedure call or argument");
    }
  };
  number(7);
  std::size_t start = 11;
  for (unsigned i = 0; i < at(text, 0); ++i) {
    number(start);
    number(start + 4);
    std::size_t end = start + 8;
    while (end + 1 < text.size() && (text[end] != 0 || text[end + 1] != 0)) ++end;
    if (end + 1 >= text.size()) break;
    start = end + 2;
  }
  const bool guid = start + 16 == text.size();
  lines.emplace_back(guid ? "Str_to_query_reply: GUID IS at end"
                          : "Str_to_query_reply: GUID not at end");
  return lines;
}

// What a chunk must lead to, read byte by byte.
Events expected_of(const std::string& chunk) {
  if (chunk.size() < 23) return {"Format_in_data: data < 23 bytes, dropping"};
  Events events;
  std::size_t position = 0;
  while (chunk.size() >= position + 23) {
    const std::string rest = chunk.substr(position);
    const unsigned long length =
        at(rest, 19) + at(rest, 20) * 256UL + at(rest, 21) * 65536UL + at(rest, 22) * 16777216UL;
    events.emplace_back("[received]");
    if (length > 32000) {
      events.push_back("Format_in_data: Bad header length, Drop " + std::to_string(rest.size()) +
                       " Bytes!");
      break;
    }
    const std::string size = " " + std::to_string(length);
    const std::string end = size + " of " + std::to_string(rest.size()) + "]";
    switch (at(rest, 16)) {
      case 0:
        events.push_back("[ping" + end);
        break;
      case 1:
        events.push_back("[pong" + end);
        break;
      case 64:
        events.push_back("[push" + end);
        break;
      case 128:
        events.push_back("[query" + end);
        break;
      case 129:
        for (const std::string& line : hit_lines(rest, length)) events.push_back(line);
        events.push_back("[query hit" + end);
        break;
      default:
        events.push_back("[unknown " + std::to_string(at(rest, 16)) + size + "]");
    }
    position += 23 + length;
  }
  return events;
}

std::string descriptor(int function, const std::string& payload, std::size_t claimed,
                       const std::string& guid = "ABCDEFGHIJKLMNOP") {
  return descriptor_header(guid, function, 7, 0, claimed) + payload;
}
std::string descriptor(int function, const std::string& payload) {
  return descriptor(function, payload, payload.size());
}

std::vector<std::string> samples() {
  const std::string zeros(2, '\0');
  const std::string hit = std::string("\x01\xCA\x18\1\2\3\4\x38\0\0\0", 11) +
                          std::string("\x07\0\0\0\x09\0\0\0", 8) + "song.mp3" + zeros +
                          "0123456789abcdef";
  return {
      descriptor(0, ""),
      descriptor(0, "a ping with a payload"),
      descriptor(1, std::string("\xCA\x18\x0A\0\0\1\5\0\0\0\x64\0\0\0", 14)),
      descriptor(128, std::string("\0\0abc\0", 6)),
      descriptor(129, hit),
      // An identifier that reads as one hit; the payload's end is the entry's.
      descriptor(129, hit, hit.size(), std::string("\1\xCA\x18\1\2\3\4abcdeXYZW", 16)),
      // Its third byte makes the port too large.
      descriptor(129, hit, hit.size(),
                 "ab\x80"
                 "defghijklmnop"),
      descriptor(129, ""),
      descriptor(64, std::string(26, 'p')),
      descriptor(2, "payload"),
      descriptor(255, ""),
      descriptor(0, "", 32000),
      descriptor(0, "tail", 32001),
      descriptor(129, "tail", 0xFFFFFFFF),
  };
}

void expect_events(const std::string& chunk) {
  Recorder recorder;
  Framing framing(recorder, recorder);
  EXPECT_EQ(framing.Format_in_data(chunk, 3), chunk.size());
  EXPECT_EQ(recorder.events, expected_of(chunk));
}

TEST(Framing, EveryDescriptorCutAtEveryByte) {
  const std::vector<std::string> all = samples();
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t cut = 0; cut <= all[i].size(); ++cut) {
      SCOPED_TRACE(std::to_string(i) + " cut at " + std::to_string(cut));
      expect_events(all[i].substr(0, cut));
      expect_events(all[i].substr(cut));
    }
  }
}

TEST(Framing, EveryPairOfDescriptorsInOneChunk) {
  const std::vector<std::string> all = samples();
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t j = 0; j < all.size(); ++j) {
      SCOPED_TRACE(std::to_string(i) + " and " + std::to_string(j));
      expect_events(all[i] + all[j]);
      expect_events(all[i] + all[j].substr(0, 22));
    }
  }
}

// The same written out, so that not everything rests on a second reading.
TEST(Framing, NamedCases) {
  const auto events = [](const std::string& chunk) {
    Recorder recorder;
    Framing(recorder, recorder).Format_in_data(chunk, 3);
    return recorder.events;
  };
  const std::string ping = descriptor(0, "");
  EXPECT_EQ(events(ping), (Events{"[received]", "[ping 0 of 23]"}));
  EXPECT_EQ(events(""), Events{"Format_in_data: data < 23 bytes, dropping"});
  EXPECT_EQ(events(std::string(10, 'x')), Events{"Format_in_data: data < 23 bytes, dropping"});
  EXPECT_EQ(events(ping + ping + "22 bytes of a fragment"),
            (Events{"[received]", "[ping 0 of 68]", "[received]", "[ping 0 of 45]"}));
  EXPECT_EQ(events(ping + descriptor(0, "", 32001) + ping),
            (Events{"[received]", "[ping 0 of 69]", "[received]",
                    "Format_in_data: Bad header length, Drop 46 Bytes!"}));
  EXPECT_EQ(events(descriptor(2, "payload") + ping),
            (Events{"[received]", "[unknown 2 7]", "[received]", "[ping 0 of 23]"}));
  EXPECT_EQ(events(descriptor(129, "")),
            (Events{"[received]", "Error: str_to_query_reply: 1 Invalid procedure call or argument",
                    "[query hit 0 of 23]"}));
}

TEST(Framing, ATurnHandlesSomeDescriptorsAndTheRestIsOfferedAgain) {
  const std::string ping = descriptor(0, "");
  struct Case {
    std::size_t pings;
    std::size_t tail;
    std::vector<std::size_t> turns;  // descriptors handled in each
  };
  constexpr std::size_t kTurn = kDescriptorsPerTurn;
  for (const Case& c : std::vector<Case>{{kTurn, 0, {kTurn}},
                                         {kTurn, 22, {kTurn}},
                                         {kTurn + 1, 0, {kTurn, 1}},
                                         {2 * kTurn, 5, {kTurn, kTurn}},
                                         {2 * kTurn + 22, 22, {kTurn, kTurn, 22}}}) {
    std::string chunk;
    for (std::size_t i = 0; i < c.pings; ++i) chunk += ping;
    chunk += std::string(c.tail, 't');
    Recorder recorder;
    Framing framing(recorder, recorder);
    std::size_t done = 0;
    std::size_t handled = 0;
    for (std::size_t turn = 0; turn < c.turns.size(); ++turn) {
      recorder.events.clear();
      done += framing.Format_in_data(std::string_view(chunk).substr(done), 3, turn == 0);
      handled += c.turns[turn];
      EXPECT_EQ(recorder.events.size(), 2 * c.turns[turn]);
      EXPECT_EQ(done, turn + 1 == c.turns.size() ? chunk.size() : handled * ping.size());
    }
  }
}

TEST(Framing, AFragmentIsReportedOnlyAtTheStartOfAChunk) {
  Recorder recorder;
  Framing framing(recorder, recorder);
  EXPECT_EQ(framing.Format_in_data("fragment", 3, false), 8U);
  EXPECT_TRUE(recorder.events.empty());
}

TEST(Framing, AnErrorInAHandlerEndsTheChunk) {
  const std::string ping = descriptor(0, "");
  std::string chunk;
  for (int i = 0; i < 100; ++i) chunk += ping;
  Recorder recorder;
  recorder.on_descriptor = [] { throw PlatformError(Errc::subscript_out_of_range); };
  Framing framing(recorder, recorder);
  EXPECT_EQ(framing.Format_in_data(chunk, 3), chunk.size());
  EXPECT_EQ(recorder.events,
            (Events{"[received]", "[ping 0 of 2300]", "Format_in_data: Subscript out of range"}));
}

}  // namespace
}  // namespace velmora
