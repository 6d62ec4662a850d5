#include "ui/widgets/list_header.h"

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScopedValueRollback>
#include <algorithm>
#include <utility>

#include "ui/widgets/list_columns.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr int kNarrowestFirst = 16;  // digits, while it takes the room that is left

}  // namespace

ListHeader::ListHeader(std::vector<std::string> captions, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), captions_(std::move(captions)) {
  setSectionsClickable(true);
  setSectionsMovable(true);
  setHighlightSections(false);
  setStretchLastSection(false);
  setSortIndicatorClearable(true);  // the third click brings back the list's own order
  setSortIndicator(-1, Qt::AscendingOrder);
  connect(this, &QHeaderView::sectionResized, this, &ListHeader::section_resized);
  connect(this, &QHeaderView::sectionMoved, this, &ListHeader::save);
  connect(this, &QHeaderView::sortIndicatorChanged, this, &ListHeader::save);
}

void ListHeader::set_defaults() {
  {
    const QScopedValueRollback arranging(arranging_, true);
    const int digit = fontMetrics().horizontalAdvance('0');
    setMinimumSectionSize(4 * digit);
    for (int section = 0; section < count(); ++section) {
      setSectionHidden(section, false);
      moveSection(visualIndex(section), section);
      const ListColumn column = list_column(captions_[static_cast<std::size_t>(section)]);
      resizeSection(section, std::max(column.characters * digit, sectionSizeHint(section) + digit));
    }
    setSortIndicator(-1, Qt::AscendingOrder);
    first_takes_room_ = true;
  }
  give_room_to_first();
}

void ListHeader::remember_in(QSettings* settings, const QString& key) {
  settings_ = settings;
  key_ = key;
  restore();
}

void ListHeader::add_columns_menu(QMenu& menu) {
  for (int section = 0; section < count(); ++section) {
    QAction* action = menu.addAction(form_caption(captions_[static_cast<std::size_t>(section)]));
    action->setCheckable(true);
    action->setChecked(!isSectionHidden(section));
    // A list without columns could not be asked for its columns again.
    action->setEnabled(isSectionHidden(section) || hiddenSectionCount() < count() - 1);
    connect(action, &QAction::toggled, this,
            [this, section](bool on) { show_section(section, on); });
  }
  menu.addSeparator();
  connect(menu.addAction(tr("Reset columns")), &QAction::triggered, this, [this] {
    set_defaults();
    save();
  });
}

void ListHeader::add_sort_menu(QMenu& menu) {
  auto* group = new QActionGroup(&menu);
  const auto add = [&](const QString& text, int section, Qt::SortOrder order, bool chosen) {
    QAction* action = menu.addAction(text);
    action->setCheckable(true);
    action->setChecked(chosen);
    group->addAction(action);
    connect(action, &QAction::triggered, this,
            [this, section, order] { setSortIndicator(section, order); });
  };
  const int sorted = sortIndicatorSection();
  for (int section = 0; section < count(); ++section) {
    const QString caption = form_caption(captions_[static_cast<std::size_t>(section)]);
    const bool up = sortIndicatorOrder() == Qt::AscendingOrder;
    add(tr("%1, ascending").arg(caption), section, Qt::AscendingOrder, section == sorted && up);
    add(tr("%1, descending").arg(caption), section, Qt::DescendingOrder, section == sorted && !up);
  }
  menu.addSeparator();
  add(tr("Unsorted"), -1, Qt::AscendingOrder, sorted < 0);
}

void ListHeader::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  add_columns_menu(*menu);
  menu->popup(event->globalPos());
}

void ListHeader::resizeEvent(QResizeEvent* event) {
  QHeaderView::resizeEvent(event);
  give_room_to_first();
}

void ListHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int section) const {
  QHeaderView::initStyleOptionForIndex(option, section);
  if ((option->textAlignment & Qt::AlignRight) != 0) option->text += QStringView(kNumberGap);
}

void ListHeader::section_resized(int section) {
  if (arranging_) return;
  if (section == 0) {
    first_takes_room_ = false;
  } else {
    give_room_to_first();
  }
  save();
}

void ListHeader::show_section(int section, bool shown) {
  if (!shown && hiddenSectionCount() >= count() - 1) return;
  {
    const QScopedValueRollback arranging(arranging_, true);
    setSectionHidden(section, !shown);
  }
  give_room_to_first();
  save();
}

void ListHeader::give_room_to_first() {
  if (arranging_ || !first_takes_room_ || count() == 0 || isSectionHidden(0)) return;
  const QScopedValueRollback arranging(arranging_, true);
  const int others = length() - sectionSize(0);
  const int least = kNarrowestFirst * fontMetrics().horizontalAdvance('0');
  resizeSection(0, std::max(least, viewport()->width() - others));
}

void ListHeader::restore() {
  const QByteArray state = settings_->value(key_ + "/columns").toByteArray();
  if (state.isEmpty()) return;
  {
    const QScopedValueRollback arranging(arranging_, true);
    // A state of other columns, or one that shows none, is as good as no state.
    const bool taken = restoreState(state) && count() == static_cast<int>(captions_.size()) &&
                       hiddenSectionCount() < count();
    first_takes_room_ = settings_->value(key_ + "/first_takes_room", true).toBool();
    setSortIndicatorClearable(true);
    setSectionsMovable(true);
    if (!taken) set_defaults();
  }
  give_room_to_first();
}

void ListHeader::save() {
  if (arranging_ || settings_.isNull()) return;
  settings_->setValue(key_ + "/columns", saveState());
  settings_->setValue(key_ + "/first_takes_room", first_takes_room_);
}

}  // namespace velmora::ui
