// The page "Download": the queue of downloads and its buttons. It lays out the widgets that the
// binding makes for its controls.
#pragma once

#include <QWidget>

#include "form/form.h"

namespace velmora::ui {

class FormBinding;

class DownloadPage final : public QWidget {
  Q_OBJECT

 public:
  DownloadPage(Form& form, FormBinding& bind, QWidget* parent = nullptr);
};

}  // namespace velmora::ui
