// Makes the Qt application of the desktop program, or ends the process with one clear line where
// there is no display to show a window on. It is made once, in main.
#pragma once

#include <QApplication>
#include <memory>

namespace velmora::desktop {

// `argc` outlives the application.
std::unique_ptr<QApplication> make_application(int& argc, char** argv, const char* version);

}  // namespace velmora::desktop
