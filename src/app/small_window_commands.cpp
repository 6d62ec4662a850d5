#include "app/small_window_commands.h"

#include <string>

namespace velmora {

SmallWindowCommands::SmallWindowCommands(Form& form, MessageBoxes& boxes) {
  form.s_debug.on_click = [&form] { form.frmDebug.show(); };
  form.frmDebug_hide.on_click = [&form] { form.frmDebug.hide(); };
  form.unknown_stat.on_click = [&form] { form.frmUnknown.show(); };
  form.frmUnknown_hide.on_click = [&form] { form.frmUnknown.hide(); };

  form.mnushow.on_click = [&form] { form.frmMain.show(); };
  form.chkMsg.on_mouse_move = [&form](int message) {
    if (message == kLeftButtonDown) form.frmMain.show();
    if (message == kRightButtonDown) form.mnuFile.click();
  };

  const auto help = [&boxes](Button& button, std::string text) {
    button.on_click = [&boxes, text = std::move(text)] {
      boxes.show(BoxIcon::information, "?", text);
    };
  };
  help(form.help_hosts,
       "DoubleClick in the 'Currently connected' list will Disconnect the host. "
       "DoubleClick in the 'Available hosts' list will attempt a connection.");
  help(form.speed_help,
       "Setting this to a high value, will Not increase your downloading performance. It will "
       "encourage people to try and download many files from you, which will hog all your "
       "bandwidth.");
  help(form.color_help,
       " The Top button's graphics can be changed. Place the files:\n"
       " button1.gif ~ button7.gif in the same dir as this app.\n"
       "The ForeColor of buttons can't change.");
  help(form.ver_help,
       "This application is in Alpha stages. Many features are not functional yet. See the README "
       "for the newest version.");
}

}  // namespace velmora
