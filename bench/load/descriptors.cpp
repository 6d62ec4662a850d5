#include "load/descriptors.h"

#include <cstring>

namespace velmora::bench {
namespace {

constexpr std::size_t kSmallestQuery = 3;
constexpr std::size_t kLargestQuery = 77;  // 100 bytes with its header
constexpr unsigned char kTtl = 5;

}  // namespace

std::uint64_t Chance::next() {
  std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
  return z ^ (z >> 31);
}

MadeDescriptor DescriptorMaker::append_header(std::string& out, unsigned char function,
                                              unsigned char ttl, std::size_t payload) {
  char header[kHeaderBytes];
  const std::uint64_t guid[2] = {chance_.next(), chance_.next()};
  std::memcpy(header, guid, sizeof guid);
  header[16] = static_cast<char>(function);
  header[17] = static_cast<char>(ttl);
  header[18] = 0;
  for (unsigned i = 0; i < 4; ++i) header[19 + i] = static_cast<char>(payload >> (8 * i) & 0xFF);
  out.append(header, sizeof header);
  return {guid[0] + guid[1], kHeaderBytes + payload, function == kPingCode};
}

MadeDescriptor DescriptorMaker::append_to(std::string& out) {
  if (ping_every_ != 0 && chance_.below(ping_every_) == 0) return append_ping(out, kTtl);
  const std::size_t payload = kSmallestQuery + chance_.below(kLargestQuery - kSmallestQuery + 1);
  const MadeDescriptor made = append_header(out, kQueryCode, kTtl, payload);
  out.append(2, '\0');
  std::uint64_t letters = chance_.next();
  for (std::size_t i = 3; i < payload; ++i, letters = letters >> 5 | letters << 59) {
    out += static_cast<char>('a' + letters % 26);
  }
  out += '\0';
  return made;
}

MadeDescriptor DescriptorMaker::append_query(std::string& out, std::string_view text,
                                             unsigned char ttl) {
  const MadeDescriptor made = append_header(out, kQueryCode, ttl, text.size() + 3);
  out.append(2, '\0');
  out += text;
  out += '\0';
  return made;
}

MadeDescriptor DescriptorMaker::append_ping(std::string& out, unsigned char ttl) {
  return append_header(out, kPingCode, ttl, 0);
}

std::size_t descriptor_bytes(const char* descriptor) {
  std::uint32_t payload = 0;
  std::memcpy(&payload, descriptor + 19, sizeof payload);  // little-endian, as this machine
  return kHeaderBytes + payload;
}

std::uint64_t identifier_sum(const char* descriptor) {
  std::uint64_t guid[2];
  std::memcpy(guid, descriptor, sizeof guid);
  return guid[0] + guid[1];
}

}  // namespace velmora::bench
