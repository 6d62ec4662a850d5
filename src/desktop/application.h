// Makes the Qt application of the desktop program, or ends the process with one clear line where
// there is no display to show a window on. It is made once, in main.
#pragma once

#include <QApplication>
#include <QTranslator>
#include <memory>

namespace velmora::desktop {

// `argc` outlives the application.
std::unique_ptr<QApplication> make_application(int& argc, char** argv, const char* version);

// The window's texts in a language such as "de-AT": velmora_de_AT.qm, else velmora_de.qm, of a
// folder velmora/translations below the user's or the system's data folders. Null without one.
std::unique_ptr<QTranslator> translation_into(const QString& language);

}  // namespace velmora::desktop
