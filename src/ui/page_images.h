// The images of the seven page buttons: built-in ones, and the user's own from the files
// "button1.gif" to "button7.gif" of the profile folder in their place. The buttons belong to the
// window.
#pragma once

#include <QList>
#include <QString>

class QAbstractButton;

namespace velmora::ui {

void set_built_in_images(const QList<QAbstractButton*>& buttons);

// Each file is read by itself: one that is missing, too large or unreadable leaves its button's
// image as it is. Returns how many were taken.
int load_button_images(const QString& folder, const QList<QAbstractButton*>& buttons);

}  // namespace velmora::ui
