// Pictures of the program's own drawing, rendered from the SVG files that are built into it. What
// is black in a file takes the palette's text colour for buttons whenever it is painted, so that it
// suits dark desktops and chosen colours too. Nothing here reads a file of the user's.
#pragma once

#include <QIcon>
#include <QString>

class QWidget;

namespace velmora::ui {

// `name` is the file's name among the built-in pictures, without ".svg". The palette is that of the
// widget it is `on`, or the desktop's.
QIcon drawn_icon(const QString& name, const QWidget* on = nullptr);

QIcon program_icon();

}  // namespace velmora::ui
