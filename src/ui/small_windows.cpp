#include "ui/small_windows.h"

#include "ui/colour_window.h"
#include "ui/directory_window.h"
#include "ui/text_window.h"
#include "ui/widgets/form_binding.h"

namespace velmora::ui {

SmallWindows::SmallWindows(FormBinding& binding, QWidget& main_window) : QObject(&main_window) {
  Form& form = binding.form();
  colour_ = new ColourWindow(binding, &main_window);
  directory_ = new DirectoryWindow(binding, &main_window);
  debug_ = new TextWindow(binding, form.frmDebug, {&form.test, &form.frmDebug_hide}, &main_window);
  unknown_ = new TextWindow(binding, form.frmUnknown, {&form.frmUnknown_hide}, &main_window);
}

}  // namespace velmora::ui
