// Colours between the program and the screen: the program's 32-bit values (red + green * 256 +
// blue * 65536, or the button-face value for "never chosen") and what can be read on what.
#pragma once

#include <QColor>
#include <QPalette>
#include <cstdint>

namespace velmora::ui {

// Invalid for a colour that was never chosen.
QColor to_colour(std::int32_t value);

// How well one can be read on the other: 1 (not at all) to 21 (black on white).
double contrast(const QColor& one, const QColor& other);

// The palette's text colour where it can be read on `back`, else whichever of the palette's own
// colours reads best there.
QColor readable_on(const QColor& back, const QPalette& palette);

// Halfway between the two: for what is not enabled.
QColor between(const QColor& one, const QColor& other);

// The text's own colour, paler: whatever colours a person has chosen, it stays readable.
QColor pale(const QColor& text, const QColor& back);

}  // namespace velmora::ui
