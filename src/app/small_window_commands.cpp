#include "app/small_window_commands.h"

#include <string>

namespace velmora {

SmallWindowCommands::SmallWindowCommands(Form& form, MessageBoxes& boxes) {
  form.s_debug.on_click = [&form] { form.frmDebug.show(); };
  form.frmDebug_hide.on_click = [&form] { form.frmDebug.hide(); };
  form.unknown_stat.on_click = [&form] { form.frmUnknown.show(); };
  form.frmUnknown_hide.on_click = [&form] { form.frmUnknown.hide(); };

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
  help(form.ver_help,
       "This application is in Alpha stages. Many features are not functional yet. See the README "
       "for the newest version.");
}

}  // namespace velmora
