#include "ui/widgets/list_model.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "ui/widgets/list_columns.h"
#include "ui/widgets/list_sort_key.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

// A row that the program cannot show just now is shown empty; it says elsewhere what is wrong.
template <class Ask>
std::string asked(Ask&& ask) {
  try {
    return ask();
  } catch (const PlatformError&) {
    return {};
  }
}

}  // namespace

ListModel::ListModel(const ListView& list, QObject* parent)
    : QAbstractTableModel(parent), list_(list) {
  refresh();
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(order_.rows());
}

int ListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(list_.columns().size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const std::size_t row = list_row(index);
  const std::size_t column = static_cast<std::size_t>(index.column()) + 1;
  switch (role) {
    case Qt::DisplayRole:
      if (row > list_.rows()) return QString();
      return shown(asked([&] { return list_.cell(row, column); }));
    case Qt::ToolTipRole:
      if (row > list_.rows()) return {};
      return plain_tooltip(shown(asked([&] { return list_.cell_tooltip(row, column); })));
    case Qt::TextAlignmentRole:
      return headerData(index.column(), Qt::Horizontal, role);
    default:
      return {};
  }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  const std::string& caption = list_.columns()[static_cast<std::size_t>(section)];
  switch (role) {
    case Qt::DisplayRole:
      return form_text(caption);
    case Qt::ToolTipRole:
      return plain_tooltip(form_text(list_.tooltip()));
    case Qt::TextAlignmentRole: {
      const auto side = list_column(caption).numbers ? Qt::AlignRight : Qt::AlignLeft;
      return QVariant::fromValue(Qt::Alignment(side | Qt::AlignVCenter));
    }
    default:
      return {};
  }
}

void ListModel::sort(int column, Qt::SortOrder order) {
  if (column < 0 || column >= columnCount()) {
    order_.sort_by(nullptr, false);
  } else {
    order_.sort_by(
        [this, column](std::size_t row) {
          const auto cell = static_cast<std::size_t>(column) + 1;
          return sort_key(asked([&] { return list_.cell(row + 1, cell); }));
        },
        order == Qt::DescendingOrder);
  }
  rearrange(order_.arranged(live_rows()), {});
}

void ListModel::refresh() {
  if (shown_version_ == list_.version()) return;
  shown_version_ = list_.version();
  const std::size_t before = order_.rows();
  const std::size_t rows = list_.rows();
  const Moves moves = moves_of_followed();
  if (rows > before) {
    beginInsertRows({}, static_cast<int>(before), static_cast<int>(rows) - 1);
    order_.resize(rows);
    endInsertRows();
  }
  rearrange(order_.arranged(live_rows()), moves);
  if (rows < before) {
    beginRemoveRows({}, static_cast<int>(rows), static_cast<int>(before) - 1);
    order_.resize(rows);
    endRemoveRows();
  }
  if (rows > 0 && columnCount() > 0) {
    emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
  }
}

std::size_t ListModel::list_row(const QModelIndex& index) const {
  if (!index.isValid() || index.row() >= rowCount()) return 0;
  return order_.row_at(static_cast<std::size_t>(index.row())) + 1;
}

QModelIndex ListModel::index_of(std::size_t list_row, int column) const {
  if (list_row < 1 || list_row > order_.rows()) return {};
  return index(static_cast<int>(order_.place_of(list_row - 1)), column);
}

void ListModel::follow(const std::vector<std::size_t>& list_rows) {
  followed_.clear();
  for (const std::size_t row : list_rows) {
    if (row < 1 || row > live_rows() || followed_.size() == kMostFollowed) continue;
    followed_.push_back({row, asked([&] { return list_.row_key(row); })});
  }
}

std::size_t ListModel::live_rows() const { return std::min(order_.rows(), list_.rows()); }

// Most entries stay where they are; the others are looked for in one pass through the list.
ListModel::Moves ListModel::moves_of_followed() {
  const std::size_t rows = list_.rows();
  const auto key_of = [this](std::size_t row) { return asked([&] { return list_.row_key(row); }); };
  std::unordered_map<std::string, std::size_t> missing;
  Moves moves;
  for (std::size_t at = 0; at < followed_.size(); ++at) {
    const Followed& entry = followed_[at];
    if (entry.row <= rows && key_of(entry.row) == entry.key) continue;
    missing.emplace(entry.key, at);
    moves[entry.row] = 0;
  }
  for (std::size_t row = 1; row <= rows && !missing.empty(); ++row) {
    const auto found = missing.find(key_of(row));
    if (found == missing.end()) continue;
    Followed& entry = followed_[found->second];
    moves[entry.row] = row;
    entry.row = row;
    missing.erase(found);
  }
  std::erase_if(followed_, [&](const Followed& entry) { return missing.contains(entry.key); });
  return moves;
}

void ListModel::rearrange(RowOrder::Places places, const Moves& moves) {
  if (moves.empty() && places == order_.places()) return;
  emit layoutAboutToBeChanged({}, VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<std::size_t> rows;
  rows.reserve(static_cast<std::size_t>(before.size()));
  for (const QModelIndex& index : before) {
    const std::size_t row = list_row(index);
    const auto move = moves.find(row);
    rows.push_back(move == moves.end() ? row : move->second);
  }
  order_.adopt(std::move(places));
  QModelIndexList after;
  after.reserve(before.size());
  for (qsizetype at = 0; at < before.size(); ++at) {
    after.push_back(index_of(rows[static_cast<std::size_t>(at)], before[at].column()));
  }
  changePersistentIndexList(before, after);
  emit layoutChanged({}, VerticalSortHint);
}

}  // namespace velmora::ui
