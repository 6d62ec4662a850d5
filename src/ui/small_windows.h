// The program's small windows beside the main one: colour chooser, directory chooser, debug log,
// unknown descriptors. It makes them; the main window owns them and the form shows and hides them.
#pragma once

#include <QObject>

class QWidget;

namespace velmora::ui {

class ColourWindow;
class DirectoryWindow;
class FormBinding;
class TextWindow;

class SmallWindows : public QObject {
  Q_OBJECT

 public:
  SmallWindows(FormBinding& binding, QWidget& main_window);

  [[nodiscard]] ColourWindow& colour() const { return *colour_; }
  [[nodiscard]] DirectoryWindow& directory() const { return *directory_; }
  [[nodiscard]] TextWindow& debug() const { return *debug_; }
  [[nodiscard]] TextWindow& unknown() const { return *unknown_; }

 private:
  ColourWindow* colour_;
  DirectoryWindow* directory_;
  TextWindow* debug_;
  TextWindow* unknown_;
};

}  // namespace velmora::ui
