// The head of a list's columns: widths, order, which columns are hidden and by which one the rows
// are sorted, with the menus to change that. The first column takes the room that the others leave
// until a person gives it a width. Everything is remembered in the settings, which are not owned.
#pragma once

#include <QHeaderView>
#include <QPointer>
#include <QSettings>
#include <string>
#include <vector>

class QMenu;

namespace velmora::ui {

class ListHeader : public QHeaderView {
  Q_OBJECT

 public:
  explicit ListHeader(std::vector<std::string> captions, QWidget* parent = nullptr);

  // Once the model is there: the widths, order and sorting of a first start.
  void set_defaults();
  void remember_in(QSettings* settings, const QString& key);

  void add_columns_menu(QMenu& menu);  // each column, checked while it is shown
  void add_sort_menu(QMenu& menu);     // each column, both ways, and the list's own order

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override;

 private:
  void section_resized(int section);
  void show_section(int section, bool shown);
  void give_room_to_first();
  void restore();
  void save();

  std::vector<std::string> captions_;
  QPointer<QSettings> settings_;
  QString key_;
  bool first_takes_room_ = true;
  bool arranging_ = false;  // a width changes by itself, not by a person
};

}  // namespace velmora::ui
