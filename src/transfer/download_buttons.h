// The buttons Pause, Delete, Up and Down of the page "Download", for the selected row. Kept:
// without the switch whole_files they do nothing. It keeps nothing.
#pragma once

#include <functional>

#include "form/form.h"
#include "platform/debug_log.h"
#include "transfer/whole_downloads.h"

namespace velmora {

class DownloadButtons {
 public:
  // `on` tells whether the switch is.
  DownloadButtons(Form& form, DebugLog& log, WholeDownloads& downloads, std::function<bool()> on);
};

}  // namespace velmora
