// The descriptors that the loads send: a mix of pings and queries of 23 to 100 bytes, each with an
// identifier of its own, so that a servent relays every one. It makes bytes and knows no socket.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmora::bench {

inline constexpr std::size_t kHeaderBytes = 23;
inline constexpr std::size_t kPongBytes = 37;  // what a ping is answered with
inline constexpr unsigned char kPingCode = 0;
inline constexpr unsigned char kPongCode = 1;
inline constexpr unsigned char kQueryCode = 128;

// Numbers that look random and repeat for the same seed.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next();
  std::uint64_t below(std::uint64_t bound) { return next() % bound; }

 private:
  std::uint64_t state_;
};

struct MadeDescriptor {
  std::uint64_t identifier_sum = 0;  // the two halves of the identifier added up
  std::size_t bytes = 0;
  bool ping = false;
};

class DescriptorMaker {
 public:
  // One descriptor in `ping_every` is a ping (0: none); the rest are queries.
  DescriptorMaker(std::uint64_t seed, unsigned ping_every)
      : chance_(seed), ping_every_(ping_every) {}

  MadeDescriptor append_to(std::string& out);
  // A query for one text, for hits that are asked for.
  MadeDescriptor append_query(std::string& out, std::string_view text, unsigned char ttl);
  MadeDescriptor append_ping(std::string& out, unsigned char ttl);

 private:
  MadeDescriptor append_header(std::string& out, unsigned char function, unsigned char ttl,
                               std::size_t payload);

  Chance chance_;
  unsigned ping_every_;
};

// Of a descriptor at the front of the bytes, which are at least a header.
std::size_t descriptor_bytes(const char* descriptor);
std::uint64_t identifier_sum(const char* descriptor);

}  // namespace velmora::bench
