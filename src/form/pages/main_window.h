// What the main window always shows, whatever page is chosen, and the menu of its tray icon.
#pragma once

#include "form/control.h"

namespace velmora {

struct MainWindow {
  explicit MainWindow(ControlRegistry& registry) : form_(registry) { chkMsg.set_visible(false); }

 private:
  ControlRegistry& form_;

 public:
  Window frmMain{form_, "frmMain", "Velmora", "Tray; Velmora", true};
  OptionGroup pgbut{form_,
                    "pgbut",
                    Page::window,
                    "Pages",
                    "Choose a page",
                    {"Stats", "View", "Upload", "Download", "Search", "Configuration", "Hosts"},
                    0,
                    0};
  velmora::StatusBar StatusBar{form_, "StatusBar", 3};
  CheckBox chkMsg{form_, "chkMsg", Page::window, "", "For sysbar"};
  MenuItem mnuFile{form_, "mnuFile", "File"};
  MenuItem mnushow{form_, "mnushow", "Show"};
  MenuItem mnuexit{form_, "mnuexit", "Exit"};
};

}  // namespace velmora
