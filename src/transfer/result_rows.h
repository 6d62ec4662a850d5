// Search results of equal name, extension and size as one row: which results each row stands for,
// rows in the order of their first results. A host and port counts once in a row. It looks each
// result up in a table; the results themselves (not owned) only grow until they are cleared. Rows
// and results count from 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/one_based.h"
#include "transfer/number_table.h"
#include "transfer/search_result.h"

namespace velmora {

class ResultRows {
 public:
  explicit ResultRows(const OneBased<search_result>& results) : results_(results) {}

  // Takes in the results that came since; begins anew when they were cleared.
  void catch_up();

  [[nodiscard]] std::size_t rows() const { return rows_.size(); }
  // Outside the rows each raises "Subscript out of range".
  [[nodiscard]] std::size_t first(std::size_t row) const { return at(row).first; }
  [[nodiscard]] std::size_t sources(std::size_t row) const { return at(row).sources; }
  // The first results of the row, each of another source, at most so many.
  [[nodiscard]] std::vector<std::size_t> results(std::size_t row, std::size_t most) const;

 private:
  struct Row {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint32_t sources = 0;
  };
  struct Taken {
    std::uint32_t row = 0;
    std::uint32_t next = 0;  // result of the row, 0 for none
  };

  [[nodiscard]] const Row& at(std::size_t row) const;
  void take(std::size_t number);

  const OneBased<search_result>& results_;
  std::vector<Row> rows_;
  std::vector<Taken> taken_;  // one a result
  NumberTable files_;         // first results, by what makes a row
  NumberTable sources_;       // results, by row and host
};

}  // namespace velmora
