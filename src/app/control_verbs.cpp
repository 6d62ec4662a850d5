#include "app/control_verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <numeric>
#include <utility>

namespace velmora {
namespace {

constexpr std::size_t kLongestName = 64;  // longer ones are cut in messages and never near a name

std::string lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return out;
}

// How many characters must be put in, taken out, replaced, or swapped with their neighbour.
std::size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(above.begin(), above.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] =
          std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before.swap(above);
    above.swap(row);
  }
  return above[b.size()];
}

// Calls the verb with the control as the kind that it is.
template <class Verb>
class Dispatch final : public ControlVisitor {
 public:
  explicit Dispatch(Verb& verb) : verb_(verb) {}
  void visit(TextField& control) override { verb_(control); }
  void visit(CheckBox& control) override { verb_(control); }
  void visit(OptionGroup& control) override { verb_(control); }
  void visit(Slider& control) override { verb_(control); }
  void visit(Label& control) override { verb_(control); }
  void visit(ComboList& control) override { verb_(control); }
  void visit(Button& control) override { verb_(control); }
  void visit(Picture& control) override { verb_(control); }
  void visit(MenuItem& control) override { verb_(control); }
  void visit(Window& control) override { verb_(control); }
  void visit(StatusBar& control) override { verb_(control); }
  void visit(Progress& control) override { verb_(control); }
  void visit(ListView& control) override { verb_(control); }

 private:
  Verb& verb_;
};

template <class Verb>
void with_kind(Control& control, Verb verb) {
  Dispatch<Verb> dispatch(verb);
  control.accept(dispatch);
}

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

[[noreturn]] void wrong_kind(Control& control, std::string_view why) {
  throw ControlError(fmt::format("\"{}\" is {} {}: {}", control.name(),
                                 kind_name(control) == "option group" ? "an" : "a",
                                 kind_name(control), why));
}

void require_enabled(const Control& control) {
  if (!control.enabled()) throw ControlError(fmt::format("\"{}\" is not enabled", control.name()));
}

std::size_t checked_row(const Control& control, std::int64_t row, std::size_t rows) {
  if (row >= 1 && static_cast<std::uint64_t>(row) <= rows) return static_cast<std::size_t>(row);
  throw ControlError(fmt::format("\"{}\" has no row {}; it has {} row{}", control.name(), row, rows,
                                 rows == 1 ? "" : "s"));
}

template <class Wanted>
const Wanted& wanted(const Control& control, const ControlValue& value, std::string_view what) {
  if (const auto* found = std::get_if<Wanted>(&value)) return *found;
  throw ControlError(fmt::format("\"{}\" takes {}", control.name(), what));
}

std::int64_t in_range(const Control& control, const ControlValue& value, std::int64_t first,
                      std::int64_t last) {
  const auto number = wanted<std::int64_t>(control, value, "a whole number");
  if (number >= first && number <= last) return number;
  throw ControlError(fmt::format("\"{}\" takes a whole number from {} to {}, not {}",
                                 control.name(), first, last, number));
}

}  // namespace

std::string_view shown_name(std::string_view name) {
  if (name.size() <= kLongestName) return name;
  std::size_t end = kLongestName;
  while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) --end;
  return name.substr(0, end);
}

std::string suggestion(std::string_view name, std::span<const std::string_view> names) {
  if (name.empty() || name.size() > kLongestName) return {};
  const std::string wish = lower(name);
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(2, name.size() / 3) + 1;
  for (const std::string_view candidate : names) {
    const std::size_t distance = edit_distance(wish, lower(candidate));
    if (distance < std::min(least, candidate.size())) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest.empty() ? std::string() : fmt::format("; did you mean \"{}\"?", nearest);
}

Control& named_control(const ControlRegistry& form, std::string_view name) {
  if (Control* control = form.find(name)) return *control;
  std::vector<std::string_view> names;
  form.for_each([&](Control& control) { names.emplace_back(control.name()); });
  throw ControlError(fmt::format("no control \"{}\"{}", shown_name(name), suggestion(name, names)));
}

std::string_view kind_name(Control& control) {
  std::string_view name;
  with_kind(
      control,
      Overloaded{[&](TextField&) { name = "text field"; }, [&](CheckBox&) { name = "check box"; },
                 [&](OptionGroup&) { name = "option group"; }, [&](Slider&) { name = "slider"; },
                 [&](Label&) { name = "label"; }, [&](ComboList&) { name = "combo list"; },
                 [&](Button&) { name = "button"; }, [&](Picture&) { name = "picture"; },
                 [&](MenuItem&) { name = "menu item"; }, [&](Window&) { name = "window"; },
                 [&](StatusBar&) { name = "status bar"; }, [&](Progress&) { name = "progress"; },
                 [&](ListView&) { name = "list view"; }});
  return name;
}

ControlValue value_of(Control& control) {
  ControlValue value;
  with_kind(control,
            Overloaded{[&](TextField& field) { value = field.text(); },
                       [&](CheckBox& box) { value = box.checked(); },
                       [&](OptionGroup& group) { value = std::int64_t{group.chosen()}; },
                       [&](Slider& slider) { value = std::int64_t{slider.position()}; },
                       [&](Label& label) { value = label.text(); },
                       [&](ComboList& list) { value = list.items(); },
                       [&](Button& button) { value = std::int64_t{button.back_colour()}; },
                       [&](Picture& picture) { value = picture.visible(); },
                       [&](MenuItem&) { wrong_kind(control, "it has no value"); },
                       [&](Window& window) {
                         if (window.has_text()) {
                           value = window.text();
                         } else {
                           value = window.shown();
                         }
                       },
                       [&](StatusBar& bar) { value = bar.panel(1); },
                       [&](Progress& progress) { value = progress.text(); },
                       [&](ListView&) { wrong_kind(control, "\"rows\" gives its rows"); }});
  return value;
}

void set_value(Control& control, const ControlValue& value) {
  with_kind(control,
            Overloaded{[&](TextField& field) {
                         const auto& text = wanted<std::string>(control, value, "a text");
                         require_enabled(control);
                         field.set_text(text);
                       },
                       [&](ComboList& list) {
                         const auto& text = wanted<std::string>(control, value, "a text");
                         require_enabled(control);
                         list.set_text(text);
                       },
                       [&](CheckBox& box) {
                         const bool checked = wanted<bool>(control, value, "true or false");
                         require_enabled(control);
                         box.set_checked(checked);
                       },
                       [&](OptionGroup& group) {
                         const auto number = in_range(control, value, group.first(), group.last());
                         require_enabled(control);
                         group.choose(static_cast<int>(number));
                       },
                       [&](Slider& slider) {
                         const auto position =
                             in_range(control, value, slider.minimum(), slider.maximum());
                         require_enabled(control);
                         slider.set_position(static_cast<std::int32_t>(position));
                       },
                       [&](Control&) { wrong_kind(control, "it cannot be set"); }});
}

void set_from_text(Control& control, const std::string& text) {
  ControlValue value = text;
  const auto flag = [&](CheckBox&) {
    const std::string word = lower(text);
    for (const std::string_view yes : {"1", "true", "on", "yes"}) {
      if (word == yes) value = true;
    }
    for (const std::string_view no : {"0", "false", "off", "no"}) {
      if (word == no) value = false;
    }
  };
  const auto whole_number = [&](Control&) {
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec == std::errc() && result.ptr == end) value = number;
  };
  with_kind(control, Overloaded{flag, [&](Slider& slider) { whole_number(slider); },
                                [&](OptionGroup& group) {
                                  whole_number(group);
                                  for (int i = group.first(); i <= group.last(); ++i) {
                                    if (lower(text) == lower(group.option(i))) {
                                      value = std::int64_t{i};
                                    }
                                  }
                                },
                                [](Control&) {}});
  set_value(control, value);
}

void press(Control& control) {
  require_enabled(control);
  with_kind(control,
            Overloaded{[](Button& button) { button.click(); }, [](CheckBox& box) { box.click(); },
                       [](MenuItem& item) { item.click(); },
                       [&](Label& label) {
                         if (!label.on_click) wrong_kind(control, "it does nothing on a click");
                         label.click();
                       },
                       [](Picture& picture) {
                         if (!picture.visible()) {
                           throw ControlError(fmt::format("\"{}\" is not shown", picture.name()));
                         }
                         picture.move_over();
                       },
                       [&](Control&) { wrong_kind(control, "it cannot be pressed"); }});
}

void enter_text(Control& control, const std::string& text) {
  require_enabled(control);
  with_kind(control, Overloaded{[&](TextField& field) { field.enter(text); },
                                [&](ComboList& list) { list.enter(text); },
                                [&](Control&) { wrong_kind(control, "it takes no Enter key"); }});
}

void remove_row(Control& control, std::int64_t row) {
  require_enabled(control);
  with_kind(control,
            Overloaded{[&](ComboList& list) {
                         list.press_delete(checked_row(list, row, list.items().size()));
                       },
                       [&](Control&) { wrong_kind(control, "no row of it can be deleted"); }});
}

void select_row(Control& control, std::int64_t row) {
  ListView& list = list_view(control);
  list.select(checked_row(list, row, list.rows()));
}

void activate_row(Control& control, std::int64_t row) {
  ListView& list = list_view(control);
  list.activate(checked_row(list, row, list.rows()));
}

ListView& list_view(Control& control) {
  auto* list = dynamic_cast<ListView*>(&control);
  if (list == nullptr) wrong_kind(control, "it is no list view");
  return *list;
}

const std::string* typed_text(Control& control) {
  if (const auto* field = dynamic_cast<TextField*>(&control)) return &field->text();
  if (const auto* list = dynamic_cast<ComboList*>(&control)) return &list->text();
  return nullptr;
}

}  // namespace velmora
