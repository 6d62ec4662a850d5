// The strip above the pages that says what a new user has yet to do: a folder for downloads, a
// shared folder and its scan, a first host. Each is done in place, through the form's own controls;
// a step goes away when it is done, the strip with the last one, or for good when it is closed.
// Settings and form are not owned.
#pragma once

#include <QFrame>
#include <functional>
#include <string>

#include "form/form.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QSettings;
class QVBoxLayout;

namespace velmora::ui {

class FormBinding;

class FirstSteps final : public QFrame {
  Q_OBJECT

 public:
  FirstSteps(FormBinding& bind, QSettings& settings, std::function<bool()> is_connected,
             QWidget* parent);

  [[nodiscard]] QLineEdit* host_field() const { return host_; }
  [[nodiscard]] QLabel* outcome() const { return outcome_; }
  [[nodiscard]] QPushButton* download_button() const { return download_; }
  [[nodiscard]] QPushButton* share_button() const { return share_; }
  [[nodiscard]] QPushButton* scan_button() const { return scan_; }

 private:
  void make_heading();
  void make_steps();
  QWidget* add_step(const QString& text, const QList<QWidget*>& means);
  QPushButton* step_button(const QString& text, const QString& accessible_name, Button& control);
  void follow_form();
  void show_what_is_missing();
  void show_outcome();
  void close_for_good();
  void connect_to_host();

  Form& form_;
  FormBinding& bind_;
  QSettings& settings_;
  std::function<bool()> is_connected_;
  bool closed_ = false;
  bool connected_ = false;  // now or at any time before
  std::string tried_;       // the host that was last asked for here
  bool scanned_ = false;    // in this session; an empty folder is not asked about for ever
  QVBoxLayout* layout_;
  QPushButton* download_ = nullptr;
  QPushButton* share_ = nullptr;
  QPushButton* scan_ = nullptr;
  QLineEdit* host_ = nullptr;
  QLabel* outcome_ = nullptr;
  QWidget* download_step_ = nullptr;
  QWidget* share_step_ = nullptr;
  QWidget* scan_step_ = nullptr;
  QWidget* host_step_ = nullptr;
};

}  // namespace velmora::ui
