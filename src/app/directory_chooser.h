// The directory chooser behind the two "Browse" buttons: it opens frmDir with the captions of its
// purpose and puts the chosen path where it belongs. The path in frmDir.path is the face's to fill
// while the person walks the directories; nothing here reads a directory.
#pragma once

#include <string>

#include "form/form.h"

namespace velmora {

class DirectoryChooser {
 public:
  explicit DirectoryChooser(Form& form);

 private:
  void open(const char* mode, std::string caption, std::string path);
  void use();

  Form& form_;
};

}  // namespace velmora
