// What the engine asks of the desktop around it: the icon in the notification area and the opener
// for text files. Without a desktop both are absent, and the opener says so by an error.
#pragma once

#include <string>

namespace velmora {

class TrayIcon {
 public:
  virtual ~TrayIcon() = default;
  virtual void add(const std::string& tip) = 0;
  virtual void remove() = 0;
};

class ProgramStarter {
 public:
  virtual ~ProgramStarter() = default;
  // Opens a text file (a path as in Files) in the user's editor; an error when that cannot start.
  virtual void open_text_file(const std::string& path) = 0;
};

}  // namespace velmora
