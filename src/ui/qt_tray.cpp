#include "ui/qt_tray.h"

#include <QCursor>

#include "app/small_window_commands.h"
#include "ui/widgets/text.h"

namespace velmora::ui {

QtTray::QtTray(const QIcon& icon) : icon_(icon) {}

bool QtTray::available() { return QSystemTrayIcon::isSystemTrayAvailable(); }

void QtTray::attach(Form& form) {
  menu_.setTitle(form_text(form.mnuFile.caption()));
  menu_.menuAction()->setObjectName(QString::fromStdString(form.mnuFile.name()));
  menu_.setDefaultAction(add_item(form.mnushow));
  add_item(form.mnuexit);
  form.mnuFile.on_click = [this] { pop_up(); };
  QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_,
                   [&form](QSystemTrayIcon::ActivationReason reason) {
                     if (reason == QSystemTrayIcon::Trigger) {
                       form.chkMsg.mouse_move(kLeftButtonDown);
                     } else if (reason == QSystemTrayIcon::Context) {
                       form.chkMsg.mouse_move(kRightButtonDown);
                     }
                   });
  icon_.setContextMenu(&menu_);
}

QAction* QtTray::add_item(MenuItem& item) {
  QAction* action = menu_.addAction(form_text(item.caption()));
  action->setObjectName(QString::fromStdString(item.name()));
  QObject::connect(action, &QAction::triggered, &menu_, [&item] { item.click(); });
  return action;
}

// A desktop that shows the menu of its own accord has done so before it tells of the click.
void QtTray::pop_up() {
  if (!menu_.isVisible()) menu_.popup(QCursor::pos());
}

void QtTray::add(const std::string& tip) {
  icon_.setToolTip(shown(tip));
  icon_.show();
}

void QtTray::remove() { icon_.hide(); }

}  // namespace velmora::ui
