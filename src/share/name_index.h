// The names of the shared files prepared for searching: upper-cased in one run of memory, and,
// where there are many, with a list of the names that hold each group of three bytes. It answers
// exactly what reading every name would, in the same order, but reads only the names that hold the
// rarest group of the words asked for. Letters are those of ASCII; every other byte stands for
// itself. Names count from 1 and cannot be changed: a new list makes a new index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

void make_upper_case(std::string& text);

struct NameMatches {
  std::vector<std::size_t> names;  // numbers, ascending
  std::size_t names_read = 0;      // how many had to be looked at
};

class NameIndex {
 public:
  // Fewer names than this are simply all read.
  static constexpr std::size_t kFewNames = 256;

  NameIndex() = default;
  explicit NameIndex(const std::vector<std::string_view>& names);

  // The names in which every word (upper-cased) occurs; an empty word always does. It stops behind
  // the name with which there are `limit` of them; whatever the limit, the first name is looked at.
  [[nodiscard]] NameMatches find(std::span<const std::string_view> words, double limit) const;

 private:
  [[nodiscard]] std::size_t names() const { return ends_.size(); }
  [[nodiscard]] std::string_view name(std::size_t number) const;
  void list_groups();
  [[nodiscard]] std::span<const std::uint16_t> holders(std::string_view group) const;
  [[nodiscard]] bool rarest_holders(std::span<const std::string_view> words,
                                    std::span<const std::uint16_t>& rarest) const;

  std::string text_;               // all names, one behind the other
  std::vector<std::size_t> ends_;  // where each name ends in text_
  // Groups share a list where their hashes agree; list k is lists_[starts_[k]] to starts_[k + 1].
  std::vector<std::uint32_t> starts_;
  std::vector<std::uint16_t> lists_;
};

}  // namespace velmora
