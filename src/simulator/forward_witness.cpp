#include "simulator/forward_witness.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmora::simulator {
namespace {

constexpr std::size_t kHeader = 23;
constexpr std::size_t kIdentity = 17;  // identifier and function
constexpr std::size_t kHopsAt = 18;
constexpr std::size_t kLengthAt = 19;
constexpr std::size_t kMostWaiting = 32'022;  // bytes of one descriptor

// 0 when it is too short to claim one.
std::size_t claimed_length(std::string_view descriptor) {
  std::size_t length = 0;
  if (descriptor.size() < kHeader) return length;
  for (std::size_t i = 4; i > 0; --i) {
    length = length * 256 + static_cast<unsigned char>(descriptor[kLengthAt + i - 1]);
  }
  return length;
}

bool begins_a_transfer(std::string_view data) {
  return data.starts_with("GET ") || data.starts_with("HTTP") || data.starts_with("GIV ") ||
         data.starts_with("That file") || data.starts_with("This file");
}

}  // namespace

void ForwardWitness::read(std::uint64_t socket, std::string_view data) {
  Connection& connection = connections_[socket];
  if (!connection.descriptors) return;
  std::string& bytes = connection.last_bytes;
  bytes.erase(0, bytes.size() - std::min(bytes.size(), kMostWaiting));
  bytes += data;
}

std::string ForwardWitness::written(std::uint64_t socket, std::string_view data) {
  Connection& connection = connections_[socket];
  if (!connection.talked) connection.descriptors = !begins_a_transfer(data);
  connection.talked = true;
  if (!connection.descriptors || data.starts_with("GNUTELLA ")) return {};
  // Only what it forwards is gathered; of that only the last can be short.
  const std::size_t first = std::min(data.size(), kHeader + claimed_length(data));
  std::string fault = one_written(data.substr(0, first), false);
  for (data.remove_prefix(first); fault.empty() && !data.empty();) {
    const std::size_t size = std::min(data.size(), kHeader + claimed_length(data));
    fault = one_written(data.substr(0, size), true);
    data.remove_prefix(size);
  }
  return fault;
}

// A payload that is shorter than claimed is the naive answer to a field that holds no address.
std::string ForwardWitness::one_written(std::string_view descriptor, bool must_be_forwarded) {
  if (descriptor.size() < kHeader) {
    return fmt::format("{} bytes left as a descriptor", descriptor.size());
  }
  if (descriptor[kHopsAt] == 0 && !must_be_forwarded) return {};  // its own
  ++forwarded_;
  if (came_in(descriptor)) return {};
  return fmt::format("it forwarded a descriptor of function {} and {} bytes that never came in",
                     static_cast<unsigned char>(descriptor[16]), descriptor.size() - kHeader);
}

// TTL and hops change on the way; a payload is cut only where its chunk ended.
bool ForwardWitness::came_in(std::string_view descriptor) const {
  for (const auto& [socket, connection] : connections_) {
    const std::string_view chunk = connection.last_bytes;
    const std::string_view identity = descriptor.substr(0, kIdentity);
    for (std::size_t at = chunk.find(identity); at != std::string_view::npos;
         at = chunk.find(identity, at + 1)) {
      const std::string_view source = chunk.substr(at);
      if (source.size() < kHeader) break;
      const std::string_view rest = source.substr(kLengthAt, 4 + claimed_length(source));
      if (rest == descriptor.substr(kLengthAt)) return true;
    }
  }
  return false;
}

}  // namespace velmora::simulator
