// The descriptors of one connection that go to all others, gathered so that each of those is
// written to once a run instead of once a descriptor. Every copy stays a copy of its own: it is
// counted, and one that cannot be written is trapped ("foward_data: ") and dropped for that
// connection only. MessageConnections owns it and writes it out before anybody could see that it
// was gathered. Sizes are bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/debug_log.h"

namespace velmora {

// Where the copies go.
class CopyTaker {
 public:
  virtual ~CopyTaker() = default;
  [[nodiscard]] virtual std::span<const std::size_t> connected_ones() const = 0;
  // Descriptors in a row, and the offset at which each of them ends: all or none are taken. Raises
  // the platform's error.
  virtual void take_copies(std::size_t connection, std::string_view bytes,
                           std::span<const std::uint32_t> ends) = 0;
};

class BroadcastRun {
 public:
  static constexpr std::size_t kMostBytes = std::size_t{16} << 10;
  static constexpr std::size_t kMostCopies = 512;

  BroadcastRun(CopyTaker& taker, DebugLog& log) : taker_(taker), log_(log) {}

  // A descriptor (with its header) that leaves with other hops and another TTL. `written_to` is
  // raised by the number of connections that took it; none if nobody counts them.
  void add(std::size_t source, std::string_view descriptor, std::uint8_t ttl, std::uint8_t hops,
           float* written_to);

  // Everything that was added since the last time, to those that are connected.
  void write() noexcept;

  // Whether a connection has copies to come; what else is written to it must wait for them.
  [[nodiscard]] bool waits_for(std::size_t connection) const {
    return copies_ > 0 && connection != source_;
  }

 private:
  [[nodiscard]] std::size_t most_bytes() const;
  void write_singly(std::size_t connection);

  CopyTaker& taker_;
  DebugLog& log_;
  std::size_t source_ = 0;
  std::string bytes_;
  std::size_t copies_ = 0;
  // Of each copy: where it ends in bytes_, the counter to raise (or none), and by how many of the
  // connections that did not take the whole run it was taken.
  std::array<std::uint32_t, kMostCopies> ends_;
  std::array<float*, kMostCopies> written_to_;
  std::array<std::size_t, kMostCopies> taken_singly_;
};

}  // namespace velmora
