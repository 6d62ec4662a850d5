#include "ui/widgets/list_table.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "platform/trap.h"
#include "ui/widgets/colours.h"
#include "ui/widgets/list_columns.h"
#include "ui/widgets/list_header.h"
#include "ui/widgets/list_model.h"
#include "ui/widgets/row_rates.h"
#include "ui/widgets/status_delegate.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr std::size_t kMostCopiedRows = 20'000;

class CellDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    if ((option->displayAlignment & Qt::AlignRight) != 0) option->text += QStringView(kNumberGap);
  }
};

}  // namespace

ListTable::Clock ListTable::steady_clock() {
  return [] {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
  };
}

ListTable::ListTable(ListView& list, QWidget* parent, Clock clock)
    : QTableView(parent),
      list_(list),
      model_(new ListModel(list, this)),
      header_(new ListHeader(list.columns(), this)) {
  setObjectName(QString::fromStdString(list.name()));
  setAccessibleName(form_text(list.caption()));
  setToolTip(plain_tooltip(form_text(list.tooltip())));
  setHorizontalHeader(header_);
  setModel(model_);
  setItemDelegate(new CellDelegate(this));
  const auto& columns = list.columns();
  for (std::size_t at = 0; at < columns.size(); ++at) {
    if (columns[at] != kStatusColumn) continue;
    rates_ = std::make_unique<RowRates>(std::move(clock));
    setItemDelegateForColumn(static_cast<int>(at), new StatusDelegate(*model_, *rates_, this));
    break;
  }
  setShowGrid(false);
  setAlternatingRowColors(true);
  setWordWrap(false);
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(ExtendedSelection);
  setTabKeyNavigation(false);
  setHorizontalScrollMode(ScrollPerPixel);
  setCornerButtonEnabled(false);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  set_row_height();
  setSortingEnabled(true);
  header_->set_defaults();
  describe();
  show_choice_of_form();
}

ListTable::~ListTable() = default;

void ListTable::refresh() {
  if (rates_) rates_->feed(list_);
  {
    const QScopedValueRollback refreshing(refreshing_, true);
    const bool all = all_of_many_marked();
    if (all) selectionModel()->clearSelection();
    model_->refresh();
    if (all) selectAll();
  }
  show_choice_of_form();
  describe();
}

void ListTable::set_empty_hint(const QString& text) {
  if (text == empty_hint_) return;
  empty_hint_ = text;
  describe();
  viewport()->update();
}

void ListTable::remember_in(QSettings* settings) {
  header_->remember_in(settings, "lists/" + objectName());
}

void ListTable::activate_current() {
  const std::size_t row = model_->list_row(currentIndex());
  if (row == 0) return;
  const auto activate = [&] { list_.activate(row); };
  ask([&] { on_activate ? on_activate(activate) : activate(); });
}

// The rows as they are shown, in the columns as they are shown.
void ListTable::copy_rows() {
  std::vector<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  if (rows.empty()) return;
  if (rows.size() > kMostCopiedRows) {
    rows.resize(kMostCopiedRows);
    if (on_error) on_error(tr("Only the first %L1 rows were copied").arg(kMostCopiedRows));
  }
  QString text;
  for (const int row : rows) {
    QStringList cells;
    for (int place = 0; place < header_->count(); ++place) {
      const int column = header_->logicalIndex(place);
      if (!header_->isSectionHidden(column)) {
        cells << model_->index(row, column).data().toString();
      }
    }
    text += cells.join('\t') + '\n';
  }
  if (rows.size() == 1) text.chop(1);
  QApplication::clipboard()->setText(text);
}

void ListTable::copy_cell() {
  if (currentIndex().isValid()) {
    QApplication::clipboard()->setText(currentIndex().data().toString());
  }
}

void ListTable::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    set_row_height();
  }
}

void ListTable::contextMenuEvent(QContextMenuEvent* event) {
  const bool by_key = event->reason() == QContextMenuEvent::Keyboard;
  const QPoint at =
      by_key ? viewport()->mapToGlobal(visualRect(currentIndex()).center()) : event->globalPos();
  make_menu()->popup(at);
}

void ListTable::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  choice_changed();
}

void ListTable::selectionChanged(const QItemSelection& selected, const QItemSelection& before) {
  QTableView::selectionChanged(selected, before);
  choice_changed();
}

void ListTable::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && (event->modifiers() & ~Qt::KeypadModifier) == 0) {
    activate_current();
  } else if (event->matches(QKeySequence::Copy)) {
    copy_rows();
  } else {
    QTableView::keyPressEvent(event);
    return;
  }
  event->accept();
}

void ListTable::mouseDoubleClickEvent(QMouseEvent* event) {
  QTableView::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid()) {
    activate_current();
  }
}

// Home and End mean the list's ends, as in every list, not those of a row.
QModelIndex ListTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  const int last = model_->rowCount() - 1;
  if (last < 0 || (action != MoveHome && action != MoveEnd)) {
    return QTableView::moveCursor(action, modifiers);
  }
  return model_->index(action == MoveHome ? 0 : last, std::max(currentIndex().column(), 0));
}

void ListTable::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (model_->rowCount() > 0 || empty_hint_.isEmpty()) return;
  QPainter painter(viewport());
  const int margin = 2 * fontMetrics().height();
  painter.setPen(pale(palette().color(QPalette::Text), palette().color(QPalette::Base)));
  painter.drawText(viewport()->rect().adjusted(margin, 0, -margin, 0),
                   Qt::AlignCenter | Qt::TextWordWrap, empty_hint_);
}

bool ListTable::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    if (show_tooltip(help->pos(), help->globalPos())) return true;
  }
  return QTableView::viewportEvent(event);
}

void ListTable::set_row_height() {
  verticalHeader()->setMinimumSectionSize(1);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() +
                                          std::max(6, fontMetrics().height() / 3));
}

void ListTable::describe() {
  const bool hint = model_->rowCount() == 0 && !empty_hint_.isEmpty();
  const QString text = hint ? empty_hint_ : form_text(list_.tooltip());
  if (text != accessibleDescription()) setAccessibleDescription(text);
}

// A row is the person's choice once it is both current and marked: the focus alone chooses none.
void ListTable::choice_changed() {
  if (refreshing_) return;
  follow_marked_rows();
  const QModelIndex current = currentIndex().siblingAtColumn(0);
  if (!current.isValid() || !selectionModel()->isSelected(current)) return;
  if (chosen_ == current) return;
  chosen_ = current;
  ask([&] { list_.select(model_->list_row(current)); });
}

void ListTable::follow_marked_rows() {
  std::vector<std::size_t> rows;
  if (chosen_.isValid()) rows.push_back(model_->list_row(chosen_));
  if (currentIndex().isValid()) rows.push_back(model_->list_row(currentIndex()));
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      if (rows.size() >= ListModel::kMostFollowed) break;
      rows.push_back(model_->list_row(model_->index(row, 0)));
    }
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  model_->follow(rows);
}

// Then all stay marked: to find each of 200,000 rows again would take a second.
bool ListTable::all_of_many_marked() const {
  int marked = 0;
  for (const QItemSelectionRange& range : selectionModel()->selection()) marked += range.height();
  return marked == model_->rowCount() && marked > static_cast<int>(ListModel::kMostFollowed);
}

// The form's selection goes with its entry, as the marked rows do here; they differ when the
// choice was made elsewhere.
void ListTable::show_choice_of_form() {
  const std::size_t row = list_.selected();
  const QModelIndex theirs = model_->index_of(row);
  if (chosen_ == theirs) return;
  const QModelIndex before = chosen_;
  chosen_ = theirs;
  const QScopedValueRollback refreshing(refreshing_, true);
  if (theirs.isValid()) {
    const auto whole_row = QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    selectionModel()->setCurrentIndex(theirs, whole_row);
    scrollTo(theirs);
  } else {
    selectionModel()->select(before, QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
  }
  follow_marked_rows();
}

QMenu* ListTable::make_menu() {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const bool row = selectionModel()->isSelected(currentIndex());  // not beside the rows
  if (!activate_text_.isEmpty()) {
    QAction* activate = menu->addAction(activate_text_, this, &ListTable::activate_current);
    activate->setEnabled(row);
    menu->setDefaultAction(activate);
    menu->addSeparator();
  }
  QAction* copy = menu->addAction(tr("&Copy"), this, &ListTable::copy_rows);
  copy->setShortcut(QKeySequence::Copy);
  copy->setEnabled(selectionModel()->hasSelection());
  menu->addAction(tr("Copy c&ell"), this, &ListTable::copy_cell)->setEnabled(row);
  menu->addSeparator();
  header_->add_sort_menu(*menu->addMenu(tr("&Sort by")));
  header_->add_columns_menu(*menu->addMenu(tr("C&olumns")));
  return menu;
}

// A cell without a tool-tip tells its text where the column is too narrow for it.
bool ListTable::show_tooltip(const QPoint& at, const QPoint& global) {
  const QModelIndex index = indexAt(at);
  if (!index.isValid()) {
    QToolTip::showText(global, toolTip(), viewport());
    return true;
  }
  if (!index.data(Qt::ToolTipRole).toString().isEmpty()) return false;
  const QString text = index.data().toString();
  const QRect cell = visualRect(index);
  const int margin = 2 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin);
  if (fontMetrics().horizontalAdvance(text) + margin <= cell.width()) return false;
  QToolTip::showText(global, plain_tooltip(text), viewport(), cell);
  return true;
}

void ListTable::ask(const std::function<void()>& call) {
  const std::string error = trapped("", call);
  if (!error.empty() && on_error) on_error(shown(error));
}

}  // namespace velmora::ui
