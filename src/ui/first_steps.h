// The strip above the pages that says what a new user has yet to do: a folder for downloads, a
// shared folder and its scan, a first host. Each is done in place, through the form's own controls.
// A step that is done stays in its place with a tick; the strip goes away with the last one, or for
// good when it is closed. Settings and form are not owned.
#pragma once

#include <QFrame>
#include <cstddef>
#include <functional>
#include <optional>
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
  [[nodiscard]] bool shared() const { return share_step_.done; }  // a folder, and scanned

 private:
  struct Step {
    QLabel* tick = nullptr;
    bool done = false;
  };

  void make_heading();
  void make_steps();
  Step add_step(const QString& text, const QList<QWidget*>& means);
  QPushButton* step_button(const QString& accessible_name, std::function<void()> verb);
  static void show_done(Step& step, bool done);
  void share();
  void scan_what_was_chosen();
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
  std::optional<std::size_t> folders_before_;  // while a folder to share is chosen from here
  QVBoxLayout* layout_;
  QPushButton* download_ = nullptr;
  QPushButton* share_ = nullptr;
  QLineEdit* host_ = nullptr;
  QLabel* outcome_ = nullptr;
  Step download_step_;
  Step share_step_;
  Step host_step_;
};

}  // namespace velmora::ui
