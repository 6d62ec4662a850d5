// The page "Search": the search field, its three slots and the results. It lays out the widgets
// that the binding makes for its controls; the keyboard focus of the page is its search field.
#pragma once

#include <QWidget>

#include "form/form.h"

namespace velmora::ui {

class FormBinding;

class SearchPage final : public QWidget {
  Q_OBJECT

 public:
  SearchPage(Form& form, FormBinding& bind, QWidget* parent = nullptr);
};

}  // namespace velmora::ui
