// Gives the captions of a page their accelerator letters: Alt and the letter reach the control. No
// letter is given twice on a page; a caption that finds none left goes without.
#pragma once

class QWidget;

namespace velmora::ui {

void assign_mnemonics(const QWidget& page);

}  // namespace velmora::ui
