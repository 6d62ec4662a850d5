// The last 20 queries that passed, for people to watch: a ring, position 1 again after 20. It is
// the list lview on the "View" page; nothing else reads it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "form/control.h"
#include "protocol/guid_bytes.h"

namespace velmora {

class RecentQueries : public ListSource {
 public:
  // The list follows the ring while `traffic_view` is set.
  RecentQueries(ListView& lview, const CheckBox& traffic_view);

  void add(std::string_view text, std::string_view guid);

  [[nodiscard]] std::size_t rows() const override { return used_; }
  [[nodiscard]] std::string row_key(std::size_t row) const override { return cell(row, 2); }
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;

 private:
  struct Entry {
    std::string text;
    GuidBytes guid;
  };
  ListView& lview_;
  const CheckBox& traffic_view_;
  std::array<Entry, 20> ring_;
  std::size_t position_ = 0;
  std::size_t used_ = 0;
};

}  // namespace velmora
