// Texts between the program and the widgets. Byte strings, some of them chosen by strangers, are
// shown as UTF-8 where they are valid UTF-8, else as Latin-1, and characters that would hide, break
// or turn a text are shown as marks. Nothing here is ever rich text.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace velmora::ui {

// One line: control characters as symbols ("␊"), direction and zero-width characters as "\u202E".
QString shown(std::string_view bytes);
// The same, but tabs stay, and line breaks of all three kinds: CR LF, LF, CR.
QString shown_lines(std::string_view bytes);

// A text to be edited: every character as it is, so that it can go back unchanged.
QString editable(std::string_view bytes);
std::string bytes(const QString& text);  // UTF-8
// What an edited text stands for. Where the text was Latin-1 before and still can be, it stays so:
// a path with a foreign byte does not change when something else in it is edited.
std::string edited_bytes(const QString& text, std::string_view before);

// A tool-tip that Qt cannot take for rich text; long ones wrap, very long ones end in "…".
QString plain_tooltip(const QString& text);

// A caption or a tool-tip of the form in the user's language.
QString form_text(std::string_view source);
// The same where "&" would mark an accelerator key.
QString form_caption(std::string_view source);

}  // namespace velmora::ui
