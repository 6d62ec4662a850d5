// Opens a text file in whatever the desktop opens such files with. It starts that program and knows
// nothing more of it.
#pragma once

#include <QString>

#include "platform/desktop.h"

namespace velmora::ui {

class QtPrograms : public ProgramStarter {
 public:
  explicit QtPrograms(QString profile_folder);  // absolute; paths are relative to it

  void open_text_file(const std::string& path) override;

 private:
  QString profile_folder_;
};

}  // namespace velmora::ui
