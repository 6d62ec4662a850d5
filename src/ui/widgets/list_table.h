// The widget of one list of the form: its rows in columns that can be sorted, resized, moved and
// hidden. It shows and asks; the form's list view (not owned) stays the master of what the rows
// are and which one is selected. Whoever watches the form calls refresh() after a change of the
// list. More rows can be marked for copying; only the current one is the form's selected row.
#pragma once

#include <QPersistentModelIndex>
#include <QPointer>
#include <QString>
#include <QTableView>
#include <functional>
#include <memory>

#include "form/control.h"

class QMenu;
class QSettings;

namespace velmora::ui {

class ListHeader;
class ListModel;
class RowRates;

class ListTable : public QTableView {
  Q_OBJECT

 public:
  using Clock = std::function<double()>;  // seconds, never going back

  explicit ListTable(ListView& list, QWidget* parent = nullptr, Clock clock = steady_clock());
  ~ListTable() override;

  void refresh();
  // What a double click does, in words: the first line of the context menu. None: no such line.
  void set_activate_text(const QString& text) { activate_text_ = text; }
  // Said in place of the rows while there are none.
  void set_empty_hint(const QString& text);
  // Widths, order, hidden columns and the sorting are kept there from now on, and taken over.
  void remember_in(QSettings* settings);

  [[nodiscard]] ListModel& list_model() { return *model_; }
  [[nodiscard]] ListHeader& list_header() { return *header_; }
  static Clock steady_clock();

  // Runs the activation of a row, where the page has something to add to it.
  std::function<void(const std::function<void()>& activate)> on_activate;
  // Told what the program said when it could not do what was asked.
  std::function<void(QString)> on_error;

  void activate_current();
  void copy_rows();
  void copy_cell();

 protected:
  void changeEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  void paintEvent(QPaintEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& before) override;
  bool viewportEvent(QEvent* event) override;

 private:
  void set_row_height();
  void describe();
  void choice_changed();
  void follow_marked_rows();
  [[nodiscard]] bool all_of_many_marked() const;
  void show_choice_of_form();
  QMenu* make_menu();
  bool show_tooltip(const QPoint& at, const QPoint& global);
  void ask(const std::function<void()>& call);

  ListView& list_;
  ListModel* model_;
  ListHeader* header_;
  std::unique_ptr<RowRates> rates_;  // where the rows are transfers
  QString activate_text_;
  QString empty_hint_;
  QPersistentModelIndex chosen_;  // what the form and the table agree on
  bool refreshing_ = false;
};

}  // namespace velmora::ui
