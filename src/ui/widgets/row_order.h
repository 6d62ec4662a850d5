// In which order a list's rows are shown: the list's own, or sorted by a key of each row. It is a
// permutation beside the list, which itself stays as it is. Keys are read once and kept; a list
// that has grown has its new rows merged in. Rows and places count from 0. It knows no cells and no
// widgets; its model owns it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velmora::ui {

class RowOrder {
 public:
  using KeyOf = std::function<std::string(std::size_t row)>;  // empty keys are always last
  using Places = std::vector<std::uint32_t>;  // the row at each place; none: the list's own order

  [[nodiscard]] std::size_t rows() const { return rows_; }
  [[nodiscard]] const Places& places() const { return places_; }
  [[nodiscard]] std::size_t row_at(std::size_t place) const;
  [[nodiscard]] std::size_t place_of(std::size_t row) const;

  void sort_by(KeyOf key_of, bool descending);  // no function: the list's own order
  // The order that should be, for adopt(): the rows below `live` with the keys that they have, then
  // the others, which the list has lost.
  [[nodiscard]] Places arranged(std::size_t live);
  void adopt(Places places);
  // More rows come last; rows that go are the last ones, where adopt() has put them.
  void resize(std::size_t rows);

 private:
  [[nodiscard]] bool before(std::uint32_t a, std::uint32_t b) const;
  Places renew_keys(std::size_t live);
  void renew(std::size_t from, std::size_t to, Places& changed);
  [[nodiscard]] bool sample_differs(std::size_t known) const;
  [[nodiscard]] Places sorted(std::size_t live) const;
  [[nodiscard]] Places merged(Places changed, std::size_t live) const;

  std::size_t rows_ = 0;
  Places places_;
  Places place_of_;  // the other way round
  KeyOf key_of_;
  bool descending_ = false;
  std::vector<std::string> keys_;  // by row
  std::size_t checked_to_ = 0;
};

}  // namespace velmora::ui
