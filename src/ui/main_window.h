// The program's window: the seven pages under their buttons, the status bar, the first steps and
// the small windows, all bound to the servent's form. It is shown and hidden as the form's frmMain
// says; closing it hides or minimises it and never ends the program. It owns the binding, its
// widgets and "window.ini" of the profile folder; the servent is not owned and outlives it.
#pragma once

#include <QMainWindow>
#include <QSettings>
#include <functional>

#include "app/servent.h"

class QStackedWidget;

namespace velmora::ui {

class FirstSteps;
class FormBinding;

struct MainWindowOptions {
  std::function<bool()> tray_present;  // may be empty: there is none
  QString profile_folder;
};

class MainWindow final : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow(Servent& servent, MainWindowOptions options);
  ~MainWindow() override;

  [[nodiscard]] FormBinding& binding() { return *bind_; }
  [[nodiscard]] FirstSteps& first_steps() { return *first_steps_; }
  [[nodiscard]] QWidget* page(Page page) const;  // one of the seven

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QWidget* make_page_buttons();
  void make_pages();
  void add_page(QWidget* page);
  QWidget* make_content();
  [[nodiscard]] QSize on_screen(QSize wanted) const;
  void restore_geometry();
  void save_geometry();
  void follow_form();
  void show_page();
  void show_or_hide();
  void show_status();

  Servent& servent_;
  Form& form_;
  MainWindowOptions options_;
  QSettings settings_;
  FormBinding* bind_;
  QStackedWidget* pages_;
  FirstSteps* first_steps_ = nullptr;
};

}  // namespace velmora::ui
