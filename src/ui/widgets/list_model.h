// A list view of the form as an item model. It keeps no cell: what is shown is asked of the list at
// that moment. Its own are the order of the rows and how many there are, both as of the last
// refresh(). Rows that came are inserted, rows that went are removed, everything else is a change
// of the layout in which a followed row keeps its entry. The list is not owned and outlives it.
#pragma once

#include <QAbstractTableModel>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "form/control.h"
#include "ui/widgets/row_order.h"

namespace velmora::ui {

class ListModel final : public QAbstractTableModel {
  Q_OBJECT

 public:
  static constexpr std::size_t kMostFollowed = 1000;

  explicit ListModel(const ListView& list, QObject* parent = nullptr);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role) const override;
  void sort(int column, Qt::SortOrder order) override;  // column -1: the list's own order

  // Shows what the list's last redraw brought; nothing where there was none.
  void refresh();

  [[nodiscard]] const ListView& list() const { return list_; }
  [[nodiscard]] std::size_t list_row(const QModelIndex& index) const;  // from 1; 0: none
  [[nodiscard]] QModelIndex index_of(std::size_t list_row, int column = 0) const;

  // These rows of the list are entries that are to be found again after the next refresh.
  void follow(const std::vector<std::size_t>& list_rows);

 private:
  struct Followed {
    std::size_t row;  // from 1
    std::string key;
  };
  using Moves = std::unordered_map<std::size_t, std::size_t>;  // by list row; 0: it is gone

  [[nodiscard]] std::size_t live_rows() const;
  Moves moves_of_followed();
  void rearrange(RowOrder::Places places, const Moves& moves);

  const ListView& list_;
  RowOrder order_;
  std::vector<Followed> followed_;
  std::optional<std::uint64_t> shown_version_;
};

}  // namespace velmora::ui
