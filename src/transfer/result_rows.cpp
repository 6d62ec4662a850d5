#include "transfer/result_rows.h"

#include <functional>
#include <string_view>

#include "platform/error.h"

namespace velmora {
namespace {

std::uint64_t mixed(std::uint64_t hash, std::uint64_t more) {
  hash = (hash ^ more) * 0x9E3779B97F4A7C15U;
  return hash ^ hash >> 32U;
}

std::uint64_t hash_of(std::string_view text) { return std::hash<std::string_view>()(text); }

std::uint32_t file_hash(const search_result& result) {
  return static_cast<std::uint32_t>(
      mixed(mixed(hash_of(result.name), hash_of(result.extension)), hash_of(result.size)));
}

std::uint32_t source_hash(const search_result& result, std::size_t row) {
  return static_cast<std::uint32_t>(
      mixed(mixed(hash_of(result.address), hash_of(result.port)), row));
}

}  // namespace

void ResultRows::catch_up() {
  if (results_.upper_bound() < taken_.size()) {
    rows_.clear();
    taken_.clear();
    files_ = {};
    sources_ = {};
  }
  while (taken_.size() < results_.upper_bound()) take(taken_.size() + 1);
}

// All memory is asked for before anything changes.
void ResultRows::take(std::size_t number) {
  const search_result& result = results_.at(number);
  const std::uint32_t hash = file_hash(result);
  const std::size_t first = files_.find(hash, [&](std::size_t other_number) {
    const search_result& other = results_.at(other_number);
    return other.size == result.size && other.name == result.name &&
           other.extension == result.extension;
  });
  const auto row =
      first == 0 ? static_cast<std::uint32_t>(rows_.size() + 1) : taken_[first - 1].row;
  const std::uint32_t place = source_hash(result, row);
  files_.reserve_one();
  sources_.reserve_one();
  if (first == 0) rows_.push_back({});
  try {
    taken_.push_back({row, 0});
  } catch (...) {
    if (first == 0) rows_.pop_back();
    throw;
  }
  if (first == 0) files_.enter(hash, number);
  const bool known = sources_.find(place, [&](std::size_t other_number) {
    const search_result& other = results_.at(other_number);
    return taken_[other_number - 1].row == row && other.address == result.address &&
           other.port == result.port;
  }) != 0;
  if (known) return;
  sources_.enter(place, number);
  Row& shown = rows_[row - 1];
  (first == 0 ? shown.first : taken_[shown.last - 1].next) = static_cast<std::uint32_t>(number);
  shown.last = static_cast<std::uint32_t>(number);
  ++shown.sources;
}

const ResultRows::Row& ResultRows::at(std::size_t row) const {
  if (row < 1 || row > rows_.size()) throw PlatformError(Errc::subscript_out_of_range);
  return rows_[row - 1];
}

std::vector<std::size_t> ResultRows::results(std::size_t row, std::size_t most) const {
  std::vector<std::size_t> found;
  for (std::size_t i = at(row).first; i != 0 && found.size() < most; i = taken_[i - 1].next) {
    found.push_back(i);
  }
  return found;
}

}  // namespace velmora
