// The small windows: colour chooser, directory chooser, debug log, unknown descriptors. A control
// whose plain name would be ambiguous carries its window's name in front: "frmDebug.hide".
#pragma once

#include "form/control.h"

namespace velmora {

struct SmallWindows {
  explicit SmallWindows(ControlRegistry& registry) : form_(registry) {
    frmDir_mode.set_visible(false);
  }

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::form;

 public:
  Window frmColor{form_, "frmColor", "Color", "Choose a color", false};
  Slider Red{form_, "Red", page, "Red", "Red part of the color", 0, 255, 0};
  Slider Green{form_, "Green", page, "Green", "Green part of the color", 0, 255, 0};
  Slider Blue{form_, "Blue", page, "Blue", "Blue part of the color", 0, 255, 0};
  Label Red_label{form_, "Red_label", page, "Red", "", "0"};
  Label Green_label{form_, "Green_label", page, "Green", "", "0"};
  Label Blue_label{form_, "Blue_label", page, "Blue", "", "0"};
  Label preview{form_, "preview", page, "Preview", "The color as it will look"};
  Button ok{form_, "ok", page, "ok", "Use this color"};

  Window frmDir{form_, "frmDir", "Directory", "Choose a directory", false};
  Label frmDir_caption{form_, "frmDir.caption", page, "", ""};
  TextField frmDir_path{form_, "frmDir.path", page, "Directory", "The selected directory"};
  Label frmDir_mode{form_, "frmDir.mode", page, "", ""};
  Button frmDir_ok{form_, "frmDir.ok", page, "OK", "Use this directory"};
  Button frmDir_cancel{form_, "frmDir.cancel", page, "Cancel", "Change nothing"};

  Window frmDebug{form_, "frmDebug", "Debug", "What the program noted of itself", false, true};
  Button frmDebug_hide{form_, "frmDebug.hide", page, "hide", "Hide this window"};
  Button test{form_, "test", page, "test", "Does nothing"};

  Window frmUnknown{form_, "frmUnknown", "Unknown", "Messages of a type that is not known",
                    false, true};
  Button frmUnknown_hide{form_, "frmUnknown.hide", page, "hide", "Hide this window"};
};

}  // namespace velmora
