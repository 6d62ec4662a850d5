// Rows of text under headings, lined up by terminal columns. It makes every cell visible (see
// visible_text.h), sets numbers to the right, and cuts the widest columns when a width is given.
// It builds the text only; who prints it is not its concern.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velmora::cli {

class Table {
 public:
  explicit Table(std::vector<std::string> headings);
  // Missing cells are empty, cells beyond the headings are left out.
  void add(const std::vector<std::string>& cells);
  [[nodiscard]] std::size_t rows() const { return rows_.size(); }
  // `width` 0: as wide as it needs. Every line ends in a line feed.
  [[nodiscard]] std::string text(std::size_t width = 0) const;

 private:
  [[nodiscard]] std::vector<std::size_t> widths(std::size_t width) const;

  std::vector<std::string> headings_;
  std::vector<std::vector<std::string>> rows_;
  std::vector<bool> numbers_;  // by column: every cell so far is a number or empty
};

}  // namespace velmora::cli
