#include "form/form.h"

namespace velmora {

// Each page is told of the registry by that name: its copy constructor would fit a Form as well.
Form::Form()
    : MainWindow(static_cast<ControlRegistry&>(*this)),
      StatsPage(static_cast<ControlRegistry&>(*this)),
      ViewPage(static_cast<ControlRegistry&>(*this)),
      UploadPage(static_cast<ControlRegistry&>(*this)),
      DownloadPage(static_cast<ControlRegistry&>(*this)),
      SearchPage(static_cast<ControlRegistry&>(*this)),
      ConfigurationPage(static_cast<ControlRegistry&>(*this)),
      BehaviourFrame(static_cast<ControlRegistry&>(*this)),
      HostsPage(static_cast<ControlRegistry&>(*this)),
      SmallWindows(static_cast<ControlRegistry&>(*this)) {}

Form::~Form() = default;

}  // namespace velmora
