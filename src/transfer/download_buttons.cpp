#include "transfer/download_buttons.h"

#include <string>
#include <utility>

#include "platform/trap.h"

namespace velmora {

DownloadButtons::DownloadButtons(Form& form, DebugLog& log, WholeDownloads& downloads,
                                 std::function<bool()> on) {
  const auto connect = [&, on = std::move(on)](Button& button,
                                               void (WholeDownloads::*action)(std::size_t)) {
    button.on_click = [&form, &log, &downloads, &button, on, action] {
      if (!on()) return;
      trap(log, button.name() + ": ", [&] {
        const std::size_t row = form.ldown.selected();
        if (row != 0) return (downloads.*action)(row);
        form.StatusBar.set_note("Select a download first.");
      });
    };
  };
  connect(form.pause_down, &WholeDownloads::pause);
  connect(form.delete_down, &WholeDownloads::remove);
  connect(form.upque_down, &WholeDownloads::move_up);
  connect(form.downque_down, &WholeDownloads::move_down);
}

}  // namespace velmora
