// The page "Upload": who fetches files from here, how fast they may, and what those who are stopped
// are told. It lays out the widgets that the binding makes for its controls.
#pragma once

#include <QWidget>

#include "form/form.h"

namespace velmora::ui {

class FormBinding;

class UploadPage final : public QWidget {
  Q_OBJECT

 public:
  UploadPage(Form& form, FormBinding& bind, QWidget* parent = nullptr);
};

}  // namespace velmora::ui
