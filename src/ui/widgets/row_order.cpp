#include "ui/widgets/row_order.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace velmora::ui {
namespace {

constexpr std::size_t kSmallList = 2000;  // all keys are read anew: its cells move
constexpr std::size_t kWindow = 4096;     // of a large list so many are checked in turn
constexpr std::size_t kSample = 64;       // and these say whether most have changed

std::uint64_t first_bytes(const std::string& key) {
  std::uint64_t value = 0;
  for (std::size_t at = 0; at < 8; ++at) {
    value = value << 8 | (at < key.size() ? static_cast<unsigned char>(key[at]) : 0U);
  }
  return value;
}

}  // namespace

std::size_t RowOrder::row_at(std::size_t place) const {
  return places_.empty() ? place : places_.at(place);
}

std::size_t RowOrder::place_of(std::size_t row) const {
  return places_.empty() ? row : place_of_.at(row);
}

void RowOrder::sort_by(KeyOf key_of, bool descending) {
  key_of_ = std::move(key_of);
  descending_ = descending;
  keys_.clear();
  checked_to_ = 0;
}

RowOrder::Places RowOrder::arranged(std::size_t live) {
  if (!key_of_ || rows_ == 0) return {};
  const bool none_known = keys_.empty() || places_.empty();
  Places changed = renew_keys(live);
  Places places =
      none_known || changed.size() > live / 8 ? sorted(live) : merged(std::move(changed), live);
  for (std::size_t row = live; row < rows_; ++row)
    places.push_back(static_cast<std::uint32_t>(row));
  return places;
}

void RowOrder::adopt(Places places) {
  places_ = std::move(places);
  place_of_.resize(places_.size());
  for (std::size_t place = 0; place < places_.size(); ++place) {
    place_of_[places_[place]] = static_cast<std::uint32_t>(place);
  }
}

void RowOrder::resize(std::size_t rows) {
  if (!places_.empty()) {
    const std::size_t kept = std::min(rows, rows_);
    places_.resize(rows);
    place_of_.resize(rows);
    for (std::size_t row = kept; row < rows; ++row) {
      places_[row] = place_of_[row] = static_cast<std::uint32_t>(row);
    }
  }
  rows_ = rows;
}

bool RowOrder::before(std::uint32_t a, std::uint32_t b) const {
  const std::string& x = keys_[a];
  const std::string& y = keys_[b];
  if (x.empty() != y.empty()) return y.empty();
  const int order = x.compare(y);
  if (order == 0) return a < b;
  return descending_ ? order > 0 : order < 0;
}

RowOrder::Places RowOrder::renew_keys(std::size_t live) {
  const std::size_t known = std::min(keys_.size(), live);
  const bool shrunk = live < keys_.size();
  keys_.resize(live);
  Places changed;
  if (live <= kSmallList || shrunk || sample_differs(known)) {
    renew(0, known, changed);
  } else if (known > 0) {
    const std::size_t from = checked_to_ < known ? checked_to_ : 0;
    checked_to_ = std::min(known, from + kWindow);
    renew(from, checked_to_, changed);
  }
  for (std::size_t row = known; row < live; ++row) {
    keys_[row] = key_of_(row);
    changed.push_back(static_cast<std::uint32_t>(row));
  }
  return changed;
}

void RowOrder::renew(std::size_t from, std::size_t to, Places& changed) {
  for (std::size_t row = from; row < to; ++row) {
    std::string key = key_of_(row);
    if (key == keys_[row]) continue;
    keys_[row] = std::move(key);
    changed.push_back(static_cast<std::uint32_t>(row));
  }
}

bool RowOrder::sample_differs(std::size_t known) const {
  if (known == 0) return false;
  for (std::size_t at = 0; at < kSample; ++at) {
    const std::size_t row = at * (known - 1) / (kSample - 1);
    if (key_of_(row) != keys_[row]) return true;
  }
  return false;
}

RowOrder::Places RowOrder::sorted(std::size_t live) const {
  // The first bytes settle most comparisons without a visit to the key itself.
  std::vector<std::pair<std::uint64_t, std::uint32_t>> entries(live);
  for (std::size_t row = 0; row < live; ++row) {
    entries[row] = {first_bytes(keys_[row]), static_cast<std::uint32_t>(row)};
  }
  std::sort(entries.begin(), entries.end(), [this](const auto& a, const auto& b) {
    const bool settled = a.first != b.first && a.first != 0 && b.first != 0;
    if (settled) return descending_ ? a.first > b.first : a.first < b.first;
    return before(a.second, b.second);
  });
  Places places;
  places.reserve(rows_);
  for (const auto& entry : entries) places.push_back(entry.second);
  return places;
}

RowOrder::Places RowOrder::merged(Places changed, std::size_t live) const {
  const auto order = [this](std::uint32_t a, std::uint32_t b) { return before(a, b); };
  std::sort(changed.begin(), changed.end(), order);
  std::vector<bool> moves(rows_);
  for (const std::uint32_t row : changed) moves[row] = true;
  Places kept;
  kept.reserve(rows_);
  std::copy_if(places_.begin(), places_.end(), std::back_inserter(kept),
               [&](std::uint32_t row) { return row < live && !moves[row]; });
  if (changed.empty()) return kept;

  // Few rows among many: each one's place is looked for, and what lies between is copied.
  Places places;
  places.reserve(rows_);
  auto from = kept.cbegin();
  for (const std::uint32_t row : changed) {
    const auto to = std::lower_bound(from, kept.cend(), row, order);
    places.insert(places.end(), from, to);
    places.push_back(row);
    from = to;
  }
  places.insert(places.end(), from, kept.cend());
  return places;
}

}  // namespace velmora::ui
