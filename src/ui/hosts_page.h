// The page "Hosts": connections above, known hosts with their names below, and a handle between the
// two. It lays out the widgets that the binding makes for its controls.
#pragma once

#include <QWidget>

#include "form/form.h"

namespace velmora::ui {

class FormBinding;

class HostsPage final : public QWidget {
  Q_OBJECT

 public:
  HostsPage(Form& form, FormBinding& bind, QWidget* parent = nullptr);

 private:
  static QWidget* make_connections(Form& form, FormBinding& bind);
  static QWidget* make_known_hosts(Form& form, FormBinding& bind);
};

}  // namespace velmora::ui
