#include "net/routing_table.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace velmora {
namespace {

using Guid = std::array<std::uint64_t, 2>;

constexpr Guid kZeros{};
constexpr Guid kBlanks{0x2020202020202020, 0x2020202020202020};

std::uint32_t hash_of(const Guid& guid) {
  const std::uint64_t mixed =
      (guid[0] ^ std::rotl(guid[1], 29)) * std::uint64_t{0x9E3779B97F4A7C15};
  return static_cast<std::uint32_t>(mixed >> 32);
}

}  // namespace

RoutingTable::RoutingTable() {
  for (std::size_t position = 0; position < kEntries; ++position) zeros_.insert(position);
}

bool RoutingTable::seen_guid(std::string_view guid, Route& route) {
  Guid key = kBlanks;
  if (guid.size() >= kGuidSize) {
    std::memcpy(key.data(), guid.data(), kGuidSize);  // of a known width, without a call
  } else {
    std::memcpy(key.data(), guid.data(), guid.size());
  }
  if (const int position = find(key); position >= 0) {
    route = entries_[static_cast<std::size_t>(position)].route;
    return true;
  }
  set_guid(write_position_, key);
  entries_[write_position_].route = route;
  write_position_ = (write_position_ + 1) % kEntries;
  return false;
}

bool RoutingTable::names(std::size_t connection) const {
  return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.route.connection > 0 &&
           static_cast<std::size_t>(entry.route.connection) == connection;
  });
}

void RoutingTable::clear_routes(std::size_t connection) {
  for (std::size_t position = 0; position < kEntries; ++position) {
    Route& route = entries_[position].route;
    if (route.connection > 0 && static_cast<std::size_t>(route.connection) == connection) {
      set_guid(position, kBlanks);
      route.connection = 0;
    }
  }
}

// The first entry that holds the identifier; -1: none.
int RoutingTable::find(const Guid& guid) const {
  if (guid == kZeros) return zeros_.smallest();
  if (guid == kBlanks) return blanks_.smallest();
  return others_.find(hash_of(guid), [&](std::int16_t position) {
    return entries_[static_cast<std::size_t>(position)].guid == guid;
  });
}

void RoutingTable::set_guid(std::size_t position, const Guid& guid) {
  const Guid& old = entries_[position].guid;
  if (old == kZeros) {
    zeros_.erase(position);
  } else if (old == kBlanks) {
    blanks_.erase(position);
  } else {
    others_.remove(hash_of(old), position);
  }
  entries_[position].guid = guid;
  if (guid == kZeros) {
    zeros_.insert(position);
  } else if (guid == kBlanks) {
    blanks_.insert(position);
  } else {
    others_.enter(hash_of(guid), position);
  }
}

}  // namespace velmora
