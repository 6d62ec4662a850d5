// The icon in the notification area. It hands what the mouse does over it to the form as the
// message numbers of the hidden check box, and pops up the form's menu "File" when the form says
// so; what the clicks mean is the engine's business. Where the desktop shows the menu itself, it
// does. The form is not owned and is there while the icon is.
#pragma once

#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

#include "form/form.h"
#include "platform/desktop.h"

namespace velmora::ui {

class QtTray : public TrayIcon {
 public:
  explicit QtTray(const QIcon& icon);
  QtTray(const QtTray&) = delete;
  QtTray& operator=(const QtTray&) = delete;

  static bool available();  // there is a notification area at this moment

  void attach(Form& form);  // once, before the icon is added

  void add(const std::string& tip) override;
  void remove() override;

  [[nodiscard]] QMenu& menu() { return menu_; }
  [[nodiscard]] QSystemTrayIcon& icon() { return icon_; }

 private:
  QAction* add_item(MenuItem& item);
  void pop_up();

  QMenu menu_;
  QSystemTrayIcon icon_;
};

}  // namespace velmora::ui
