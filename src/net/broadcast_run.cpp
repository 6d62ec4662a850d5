#include "net/broadcast_run.h"

#include <algorithm>

#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/descriptor_header.h"

namespace velmora {
namespace {

// A run leaves when it is that long on all connections together, so that no run takes long.
constexpr std::size_t kMostOnAll = std::size_t{16} << 20;
constexpr std::size_t kSomeBytes = std::size_t{2} << 10;  // worth a write, however many they are

}  // namespace

std::size_t BroadcastRun::most_bytes() const {
  return std::clamp(kMostOnAll / (taker_.connected_ones().size() + 1), kSomeBytes, kMostBytes);
}

void BroadcastRun::add(std::size_t source, std::string_view descriptor, std::uint8_t ttl,
                       std::uint8_t hops, float* written_to) {
  if (source != source_ || copies_ == kMostCopies ||
      bytes_.size() + descriptor.size() > most_bytes()) {
    write();
  }
  const std::size_t start = bytes_.size();
  bytes_ += descriptor;
  bytes_[start + kTtlOffset] = static_cast<char>(ttl);
  bytes_[start + kHopsOffset] = static_cast<char>(hops);
  source_ = source;
  ends_[copies_] = static_cast<std::uint32_t>(bytes_.size());
  written_to_[copies_] = written_to;
  taken_singly_[copies_] = 0;
  ++copies_;
}

void BroadcastRun::write() noexcept {
  if (copies_ == 0) return;
  std::size_t took_all = 0;
  for (const std::size_t other : taker_.connected_ones()) {
    if (other == source_) continue;
    try {
      taker_.take_copies(other, bytes_, std::span(ends_).first(copies_));
      ++took_all;
    } catch (const std::exception&) {
      write_singly(other);
    }
  }
  for (std::size_t copy = 0; copy < copies_; ++copy) {
    if (written_to_[copy] == nullptr) continue;
    *written_to_[copy] += to_single(static_cast<double>(took_all + taken_singly_[copy]));
  }
  bytes_.clear();
  copies_ = 0;
}

// Where there is no room for all there may be room for some.
void BroadcastRun::write_singly(std::size_t connection) {
  std::uint32_t start = 0;
  for (std::size_t copy = 0; copy < copies_; ++copy) {
    const std::uint32_t end = ends_[copy] - start;
    const auto bytes = std::string_view(bytes_).substr(start, end);
    start = ends_[copy];
    const bool taken = trap(
        log_, "foward_data: ", [&] { taker_.take_copies(connection, bytes, std::span(&end, 1)); });
    if (taken) ++taken_singly_[copy];
  }
}

}  // namespace velmora
