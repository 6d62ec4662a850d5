// The main window and its small windows as plain data: every control under its own name, with the
// page, caption, tool-tip and value that it was designed with. The fields are the live settings and
// the buttons, lists and labels are all that can be done with the program; faces and the program
// meet here. The form owns its controls and nothing else: it runs no logic.
#pragma once

#include "form/control.h"
#include "form/control_registry.h"
#include "form/pages/behaviour_frame.h"
#include "form/pages/configuration_page.h"
#include "form/pages/download_page.h"
#include "form/pages/hosts_page.h"
#include "form/pages/main_window.h"
#include "form/pages/search_page.h"
#include "form/pages/small_windows.h"
#include "form/pages/stats_page.h"
#include "form/pages/upload_page.h"
#include "form/pages/view_page.h"

namespace velmora {

// The registry comes first: the controls of the pages enter themselves there.
class Form : public ControlRegistry,
             public MainWindow,
             public StatsPage,
             public ViewPage,
             public UploadPage,
             public DownloadPage,
             public SearchPage,
             public ConfigurationPage,
             public BehaviourFrame,
             public HostsPage,
             public SmallWindows {
 public:
  Form();
  ~Form();
};

}  // namespace velmora
