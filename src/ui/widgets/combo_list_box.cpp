#include "ui/widgets/combo_list_box.h"

#include <QKeyEvent>
#include <QListView>
#include <QMenu>
#include <QVBoxLayout>

#include "ui/widgets/line_edit.h"
#include "ui/widgets/text.h"

namespace velmora::ui {

ItemsModel::ItemsModel(const std::vector<std::string>& items, QObject* parent)
    : QAbstractListModel(parent), items_(items), rows_(static_cast<int>(items.size())) {}

// What happened in between is not known, so rows come and go at the end and all the others count as
// changed: right for every change, and a selected row stays where it was.
void ItemsModel::refresh() {
  const int rows = static_cast<int>(items_.size());
  if (rows > rows_) {
    beginInsertRows({}, rows_, rows - 1);
    rows_ = rows;
    endInsertRows();
  } else if (rows < rows_) {
    beginRemoveRows({}, rows, rows_ - 1);
    rows_ = rows;
    endRemoveRows();
  }
  if (rows_ > 0) emit dataChanged(index(0), index(rows_ - 1));
}

int ItemsModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

QVariant ItemsModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (!index.isValid() || row >= items_.size()) return {};
  if (role == Qt::DisplayRole) return shown(items_[row]);
  if (role == Qt::ToolTipRole) return plain_tooltip(shown(items_[row]));
  return {};
}

ComboListBox::ComboListBox(const std::vector<std::string>& items, QWidget* parent)
    : QWidget(parent), model_(items), edit_(new LineEdit), rows_(new QListView) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(edit_);
  column->addWidget(rows_, 1);
  setFocusProxy(edit_);
  rows_->setUniformItemSizes(true);
  rows_->setModel(&model_);
  rows_->installEventFilter(this);
  rows_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(rows_, &QWidget::customContextMenuRequested, this, &ComboListBox::open_menu);
  connect(edit_, &QLineEdit::returnPressed, this, &ComboListBox::entered);
}

void ComboListBox::set_name(const QString& name) {
  edit_->setAccessibleName(name);
  rows_->setAccessibleName(name);
}

bool ComboListBox::eventFilter(QObject* watched, QEvent* event) {
  if (watched == rows_ && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->matches(QKeySequence::Delete)) {
    want_removal();
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

void ComboListBox::want_removal() {
  const QModelIndex row = rows_->currentIndex();
  if (row.isValid()) emit remove_wanted(static_cast<std::size_t>(row.row()) + 1);
}

void ComboListBox::open_menu(const QPoint& position) {
  if (!rows_->indexAt(position).isValid()) return;
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(tr("Remove"), this, &ComboListBox::want_removal);
  menu->popup(rows_->viewport()->mapToGlobal(position));
}

}  // namespace velmora::ui
