// A second reading of the bytes on the wire, for the tests' model of a servent: headers, pongs,
// query hits and queries, each with the debug lines that reading them writes. It shares nothing
// with the program's own codecs, so that an error there cannot hide here too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::model {

using Lines = std::vector<std::string>;

inline constexpr std::size_t kHeaderBytes = 23;
inline constexpr std::size_t kLongestPayload = 32000;

struct Descriptor {
  std::string guid = {};
  unsigned function = 0;
  unsigned ttl = 0;
  unsigned hops = 0;
  std::size_t length = 0;
};

struct SharedName {
  std::string name;
  std::uint32_t size = 0;
};

// What a servent tells about itself in pongs and query hits.
struct Identity {
  std::string address = {};
  unsigned message_port = 6346;
  unsigned upload_port = 6345;
  unsigned speed = 56;
  unsigned ttl = 5;
  std::size_t most_hits = 50;
  std::string guid = {};
  std::vector<SharedName> files = {};
};

std::string little_endian(std::uint64_t value, int bytes);
std::string encode(const Descriptor& header);
Descriptor decode(std::string_view bytes);  // at least kHeaderBytes

std::string pong(const Identity& who, const std::string& guid);
std::string query(const Identity& who, const std::string& guid, std::string_view text);
// The search text of a query whose payload may be cut short.
std::string query_text(std::size_t length, std::string_view payload);
// The query hit that answers, or nothing.
std::string answer(const Identity& who, const std::string& guid, const std::string& text,
                   Lines& lines);

// The lines of reading a pong.
void read_pong(std::string_view payload, Lines& lines);
// The lines of reading the first `length` bytes as a query hit.
void read_query_hit(std::size_t length, std::string_view bytes, Lines& lines);

}  // namespace velmora::model
