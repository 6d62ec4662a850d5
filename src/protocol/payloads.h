// The payloads behind the descriptor header: pong, query, query hit, push. Decoders never reject:
// short or malformed payloads give partial records and the lines that say so; only a short push is
// none. A ping has no payload.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "protocol/descriptor_header.h"

namespace velmora {

inline constexpr float kPongLength = 14;
inline constexpr float kPushLength = 26;
inline constexpr float kMaxQueryLength = 257;
inline constexpr float kMaxQueryHitLength = 67000;

struct Pong {
  std::int16_t port = 0;  // two's complement
  std::string address;    // dotted
  float files = 0;
  float kilobytes = 0;
};

struct QueryHitResult {
  float file_index = 0;
  float file_size = 0;  // bytes
  // As on the wire, audio information included. Not owned: of a hit that was read it is a part of
  // the payload, so that reading a flood of them asks for no memory for names.
  std::string_view file_name;
};

struct QueryHit {
  std::uint8_t hits = 0;
  std::int16_t port = 0;
  std::string address;
  float speed = 0;                      // kbit/s as the other side tells it
  std::vector<QueryHitResult> results;  // result i of the wire is results[i - 1]
  std::string servent_guid = std::string(kGuidSize, ' ');
  std::array<char, kGuidSize> query_guid{};  // a received one's: of the query that it answers
};

struct Push {
  GuidBytes servent;       // whom it asks
  double file_number = 0;  // of that servent's list, from 1
  std::string address;     // dotted; where the file is to be offered
  std::uint16_t port = 0;
};

std::string pong_to_str(const Pong& pong, DebugLog& log);
// Takes exactly the payload. Traps its errors ("Error: str_to_pong: " and the field); what was read
// before one is kept. Returns whether none ended the reading: a count that is cut short is 0, with
// a line of its own.
bool str_to_pong(std::string_view payload, Pong& pong, DebugLog& log,
                 const Behaviour& behaviour = kClassic);

// Traps its errors ("Query_reply_to_str: ") and then returns what was encoded so far.
std::string query_reply_to_str(const QueryHit& hit, DebugLog& log);
// Reads the first payload-length bytes of the text given. Traps its errors; then the hit count is
// the claimed one and may exceed the results.
QueryHit str_to_query_reply(const DescriptorHeader& header, std::string_view payload, DebugLog& log,
                            const Behaviour& behaviour = kClassic);

// 26 bytes. Raises "Overflow" for a file number that 32 signed bits cannot hold.
std::string push_to_str(const Push& push, DebugLog& log);
// None for a payload of another length.
std::optional<Push> str_to_push(std::string_view payload);

// The query payload: minimum speed, text, one byte 0.
std::string query_to_str(std::int16_t minimum_speed, std::string_view text);
// The search text of a whole query descriptor (header included): its bytes from 26 to the payload's
// end as far as they are there, one trailing 0 removed. A payload length below 3 raises "Invalid
// procedure call or argument".
std::string_view query_text(const DescriptorHeader& header, std::string_view descriptor);

}  // namespace velmora
