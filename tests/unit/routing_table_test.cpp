#include "net/routing_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace velmora {
namespace {

// The ring as plainly as it can be said: every look-up reads the entries from the first on.
class PlainRing {
 public:
  bool seen_guid(const std::string& text, Route& route) {
    Guid guid{};
    std::copy_n(text.data(), kGuidSize, guid.data());
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.guid == guid; });
    if (found != entries_.end()) {
      route = found->route;
      return true;
    }
    entries_[next_] = {guid, route};
    next_ = (next_ + 1) % entries_.size();
    return false;
  }
  void clear_routes(std::int16_t connection) {
    for (Entry& entry : entries_) {
      if (entry.route.connection == connection) {
        entry.guid.fill(' ');
        entry.route.connection = 0;
      }
    }
  }

 private:
  using Guid = std::array<char, kGuidSize>;
  struct Entry {
    Guid guid{};
    Route route;
  };
  std::vector<Entry> entries_ = std::vector<Entry>(RoutingTable::kEntries);
  std::size_t next_ = 0;
};

// Identifiers from a small set, so that many are met again, blanks and zeros among them.
std::string some_guid(std::mt19937& random, unsigned kinds) {
  const auto kind = random() % kinds;
  if (kind == 0) return std::string(kGuidSize, '\0');
  if (kind == 1) return std::string(kGuidSize, ' ');
  std::string guid = std::to_string(kind);
  guid.resize(kGuidSize, static_cast<char>('a' + kind % 7));
  return guid;
}

TEST(RoutingTable, AnswersAsAPlainRing) {
  constexpr int kOperations = 200'000;  // for each set
  for (const unsigned kinds : {20U, 390U, 410U, 900U, 50'000U}) {
    std::mt19937 random(kinds);
    RoutingTable table;
    PlainRing plain;
    for (int i = 0; i < kOperations; ++i) {
      if (random() % 500 == 0) {
        const auto connection = static_cast<std::int16_t>(1 + random() % 20);
        table.clear_routes(static_cast<std::size_t>(connection));
        plain.clear_routes(connection);
        continue;
      }
      const std::string guid = some_guid(random, kinds);
      Route route{.connection = static_cast<std::int16_t>(random() % 20),
                  .function = static_cast<std::uint8_t>(random() % 256),
                  .origin_mark = static_cast<std::int16_t>(random() % 3)};
      Route expected = route;
      const bool seen = table.seen_guid(guid, route);
      ASSERT_EQ(seen, plain.seen_guid(guid, expected)) << "operation " << i << " of " << kinds;
      ASSERT_EQ(route.connection, expected.connection) << "operation " << i << " of " << kinds;
      ASSERT_EQ(route.function, expected.function);
      ASSERT_EQ(route.origin_mark, expected.origin_mark);
    }
  }
}

}  // namespace
}  // namespace velmora
