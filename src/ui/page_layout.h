// How the pages arrange their widgets: lines, frames and captioned fields, in the same way
// everywhere. Widgets that are put in belong to the layout's page.
#pragma once

#include <QList>
#include <QString>

#include "form/control.h"

class QFormLayout;
class QGroupBox;
class QHBoxLayout;
class QLayout;
class QWidget;

namespace velmora::ui {

class FormBinding;

// Side by side; a null stands for the free space.
QHBoxLayout* in_line(const QList<QWidget*>& widgets);

QGroupBox* framed(const QString& title, QLayout* content);

// The field's caption in front of it: as a row of a form, or as widgets of a line.
void add_field(QFormLayout* rows, FormBinding& bind, Control& control, QLayout* field);
void add_field(QFormLayout* rows, FormBinding& bind, Control& control, QWidget* field);
QWidget* captioned(FormBinding& bind, Control& control, QWidget* field);

QFormLayout* form_rows();

// A field for a few digits is no wider than it needs to be.
QWidget* narrow(QWidget* field, int characters);

// A button whose caption others on the page have as well is told apart by its tool-tip.
QWidget* named_by_tooltip(QWidget* button);

// A button of one character, such as "?", named so too.
QWidget* small_button(QWidget* button);

}  // namespace velmora::ui
