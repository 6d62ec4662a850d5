// The page "View": the queries that pass by. It lays out the widgets that the binding makes for its
// controls and owns nothing else.
#pragma once

#include <QWidget>

#include "form/form.h"

namespace velmora::ui {

class FormBinding;

class ViewPage final : public QWidget {
  Q_OBJECT

 public:
  ViewPage(Form& form, FormBinding& bind, QWidget* parent = nullptr);
};

}  // namespace velmora::ui
