// The directory chooser: places, a tree of directories, the path as a field, and what the choice is
// for in two lines. It shows and sets the form's path; what OK does with it, the form knows. The
// tree looks at the disk for the first time when the window is first shown.
#pragma once

#include <QModelIndex>
#include <QPersistentModelIndex>

#include "form/form.h"
#include "ui/form_window.h"

class QComboBox;
class QFileSystemModel;
class QLabel;
class QPushButton;
class QTreeView;

namespace velmora::ui {

class LineEdit;

class DirectoryWindow : public FormWindow {
  Q_OBJECT

 public:
  DirectoryWindow(FormBinding& binding, QWidget* parent);
  [[nodiscard]] QComboBox* places() const { return places_; }
  [[nodiscard]] QTreeView* tree() const { return tree_; }
  void make_folder();

 private:
  void prepare();
  void start_somewhere();
  void list_places();
  void make_model();
  [[nodiscard]] QString path() const;
  void go_to(const QString& path);
  void path_changed();
  void row_chosen(const QModelIndex& index);
  void show_chosen();

  Form& form_;
  FormBinding& binding_;
  QComboBox* places_;
  QTreeView* tree_;
  LineEdit* field_;  // the path
  QLabel* trouble_;
  QPushButton* ok_ = nullptr;
  QFileSystemModel* model_ = nullptr;
  bool arriving_ = false;   // directories above the chosen one have just been read
  bool following_ = false;  // the tree moves to the path, not the path to the tree
  bool centred_ = false;    // the tree went to the chosen one by itself; a click moves no row
};

}  // namespace velmora::ui
