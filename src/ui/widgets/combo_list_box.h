// A list of texts with an edit field above it: Enter in the field offers its text, Delete on a row
// asks for its removal. The rows are read from the list they are a view of, never copied. It knows
// no control; FormBinding joins it.
#pragma once

#include <QAbstractListModel>
#include <QWidget>
#include <string>
#include <vector>

class QListView;

namespace velmora::ui {

class LineEdit;

// The rows as a model. Between a change of the items and the next refresh() the model keeps its row
// count, and a row that has gone is empty.
class ItemsModel : public QAbstractListModel {
  Q_OBJECT

 public:
  explicit ItemsModel(const std::vector<std::string>& items, QObject* parent = nullptr);
  void refresh();
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

 private:
  const std::vector<std::string>& items_;
  int rows_;
};

class ComboListBox : public QWidget {
  Q_OBJECT

 public:
  explicit ComboListBox(const std::vector<std::string>& items, QWidget* parent = nullptr);
  [[nodiscard]] LineEdit* edit() const { return edit_; }
  [[nodiscard]] QListView* rows() const { return rows_; }
  void refresh() { model_.refresh(); }
  void set_name(const QString& name);  // what a screen reader calls both

 signals:
  void entered();
  void remove_wanted(std::size_t row);  // counts from 1

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void want_removal();
  void open_menu(const QPoint& position);

  ItemsModel model_;
  LineEdit* edit_;
  QListView* rows_;
};

}  // namespace velmora::ui
