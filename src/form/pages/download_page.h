// The page "Download": the queue of downloads.
#pragma once

#include "form/control.h"

namespace velmora {

struct DownloadPage {
  explicit DownloadPage(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::download;

 public:
  ListView ldown{form_,
                 "ldown",
                 page,
                 "Downloads",
                 "The files you chose from the search results.",
                 {"Filename", "Size", "Status", "Location"}};
  Button resume_down{form_, "resume_down", page, "Resume",
                     "Start or resume every download that isn't running."};
  // The next four buttons do nothing, on purpose, unless the switch whole_files is on; then the box
  // and the number below them count as well.
  Button pause_down{form_, "pause_down", page, "Pause", "Pause a download"};
  Button delete_down{form_, "delete_down", page, "Delete", "Delete a download"};
  Button upque_down{form_, "upque_down", page, "Up", "Move a download up the queue"};
  Button downque_down{form_, "downque_down", page, "Down", "Move a download down the queue"};
  CheckBox clear_down{form_, "clear_down", page, "Auto clear",
                      "Clear finished downloads from the list."};
  TextField max_down{
      form_, "max_down", page, "Max files to download", "The Max files to download at a time.",
      "4"};
};

}  // namespace velmora
