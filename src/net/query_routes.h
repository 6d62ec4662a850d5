// The queries that passed, so that hits find back and repeats are known. A ring of 8,192 entries,
// overwritten in ring order, which takes memory only as it fills. Different searches can carry the
// same identifier (a classic one tells the hour and the second), so a query is its identifier and
// its text together. It decides nothing about what to forward. Times are in ms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "net/way.h"
#include "protocol/guid_bytes.h"

namespace velmora {

// Classic identifiers come again after a minute, so what is older than this is another search.
inline constexpr std::int64_t kRepeatMs = 50'000;

class QueryRoutes {
 public:
  static constexpr std::size_t kEntries = 8192;
  // So many queries of one identifier are looked at, the newest first.
  static constexpr int kMostOfOneIdentifier = 32;

  // Whether the same query was entered within the last kRepeatMs.
  [[nodiscard]] bool repeated(std::string_view guid, std::string_view text,
                              std::int64_t now_ms) const;
  void enter(std::string_view guid, std::string_view text, const Way& from, std::int64_t now_ms);

  // The way of the newest query of that identifier which is `usable` and whose words all occur in
  // the name that the hit offers; when none fits, of the newest usable one. Null: there is none.
  [[nodiscard]] const Way* way_back(std::string_view guid, std::string_view name,
                                    const std::function<bool(const Way&)>& usable) const;

  void clear();

 private:
  // Entries are numbered from 1 in the order of entering; the ring holds the newest of them.
  using Number = std::uint64_t;
  struct Entry {
    GuidBytes guid;
    std::string text;
    Way from;
    std::int64_t at_ms = 0;
    Number older = 0;  // the one before it with this identifier; may be overwritten by now
  };

  [[nodiscard]] const Entry* entry(Number number) const;
  [[nodiscard]] Number newest(std::string_view guid) const;

  std::vector<Entry> ring_;
  Number last_ = 0;
  std::unordered_map<GuidBytes, Number, GuidHash> newest_;  // by identifier
};

}  // namespace velmora
