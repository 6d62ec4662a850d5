#include "app/directory_chooser.h"

#include <string_view>
#include <utility>

#include "platform/trap.h"

namespace velmora {
namespace {

constexpr const char* kDownload = "download";
constexpr const char* kShare = "share";

}  // namespace

DirectoryChooser::DirectoryChooser(Form& form) : form_(form) {
  form.download_browse_config.on_click = [this] {
    open(kDownload,
         "Select a Directory to download the files.\n"
         "Files in progress of downloading will have a '.download' extension.",
         form_.down_config.text());
  };
  form.upload_browse_config.on_click = [this] {
    open(kShare,
         "Select a Directory to Share. All files will be shared.\n"
         "Only the Selected directory will be shared, Not it's Subdirectories.",
         {});
  };
  form.frmDir_ok.on_click = [this] { use(); };
  form.frmDir_cancel.on_click = [this] { form_.frmDir.hide(); };
}

void DirectoryChooser::open(const char* mode, std::string caption, std::string path) {
  form_.frmDir_mode.set_text(mode);
  form_.frmDir_caption.set_text(std::move(caption));
  form_.frmDir_path.set_text(std::move(path));
  form_.frmDir.show();
}

void DirectoryChooser::use() {
  const std::string& path = form_.frmDir_path.text();
  if (!form_.frmDir.shown() || path.empty()) return;
  const std::string error = trapped("frmDir: ", [&] {
    if (form_.frmDir_mode.text() == kShare) {
      form_.upload_config.add(path);  // kept: also when it is in the list already
    } else {
      form_.down_config.set_text(path);
    }
    form_.frmDir.hide();
  });
  if (!error.empty()) form_.StatusBar.set_panel(1, error);
}

}  // namespace velmora
