// The page "Configuration": folders, ports, limits, filter, colours, help and the three creatures.
// It lays out the widgets that the binding makes for its controls.
#pragma once

#include <QWidget>

#include "form/form.h"

class QLayout;

namespace velmora::ui {

class FormBinding;

class ConfigurationPage final : public QWidget {
  Q_OBJECT

 public:
  ConfigurationPage(Form& form, FormBinding& bind, QWidget* parent = nullptr);

 private:
  QWidget* make_folders();
  QWidget* make_ports();
  QWidget* make_hosts();
  QWidget* make_colours();
  QWidget* make_behaviour();
  QWidget* make_about();
  QLayout* make_creatures();

  Form& form_;
  FormBinding& bind_;
};

}  // namespace velmora::ui
