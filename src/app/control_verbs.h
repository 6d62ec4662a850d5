// What a person can do to a control and read off it, for whoever knows it by its name only: the
// control socket and the command line. It adds no behaviour; it says in words why something cannot
// be done. Rows count from 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "form/control_registry.h"

namespace velmora {

// A wish that cannot be fulfilled; what() tells a person why.
class ControlError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using ControlValue = std::variant<std::string, std::int64_t, bool, std::vector<std::string>>;

// A name as messages show it: at most 64 bytes of it, cut between two characters.
std::string_view shown_name(std::string_view name);

// `; did you mean "port_config"?` for the name that is nearest, "" when none is near.
std::string suggestion(std::string_view name, std::span<const std::string_view> names);

// Every verb raises a ControlError when the control is not of the kind for it, is not enabled, or
// the value or the row is none of its own.
Control& named_control(const ControlRegistry& form, std::string_view name);
std::string_view kind_name(Control& control);  // "text field", "check box", ...
ControlValue value_of(Control& control);
void set_value(Control& control, const ControlValue& value);
// The same with a value in words, as on a command line: a check box takes 1/0, true/false, on/off,
// yes/no, sliders and option groups a whole number.
void set_from_text(Control& control, const std::string& text);
void press(Control& control);
void enter_text(Control& control, const std::string& text);
void remove_row(Control& control, std::int64_t row);
void select_row(Control& control, std::int64_t row);
void activate_row(Control& control, std::int64_t row);
ListView& list_view(Control& control);

// The text that a person would type over (text fields and combo lists), null for other kinds.
const std::string* typed_text(Control& control);

}  // namespace velmora
