#include "form/control.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "form/control_registry.h"
#include "platform/error.h"

namespace velmora {
namespace {

constexpr std::size_t kMostItems = 100000;  // of one combo list

void run(const Handler& handler) {
  if (handler) handler();
}

[[noreturn]] void out_of_range() { throw PlatformError(Errc::subscript_out_of_range); }

}  // namespace

std::string_view page_name(Page page) {
  switch (page) {
    case Page::stats:
      return "Stats";
    case Page::view:
      return "View";
    case Page::upload:
      return "Upload";
    case Page::download:
      return "Download";
    case Page::search:
      return "Search";
    case Page::configuration:
      return "Configuration";
    case Page::hosts:
      return "Hosts";
    case Page::window:
      return "Window";
    case Page::form:
      return "Form";
  }
  return {};
}

Control::Control(ControlRegistry& form, std::string name, Page page, std::string caption,
                 std::string tooltip)
    : form_(form),
      name_(std::move(name)),
      page_(page),
      caption_(std::move(caption)),
      tooltip_(std::move(tooltip)) {
  form_.add(*this);
}

void Control::set_enabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  changed();
}

void Control::set_visible(bool visible) {
  if (visible == visible_) return;
  visible_ = visible;
  changed();
}

void Control::changed() { form_.changed(*this); }

TextField::TextField(ControlRegistry& form, std::string name, Page page, std::string caption,
                     std::string tooltip, std::string text, bool multi_line)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)),
      text_(std::move(text)),
      multi_line_(multi_line) {}

void TextField::set_text(std::string text) {
  if (text == text_) return;
  text_ = std::move(text);
  changed();
}

void TextField::enter(std::string text) {
  if (!enabled()) return;
  set_text(std::move(text));
  run(on_enter);
}

void TextField::accept(ControlVisitor& visitor) { visitor.visit(*this); }

CheckBox::CheckBox(ControlRegistry& form, std::string name, Page page, std::string caption,
                   std::string tooltip, bool checked)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)),
      checked_(checked) {}

void CheckBox::set_checked(bool checked) {
  if (checked == checked_) return;
  checked_ = checked;
  changed();
  run(on_change);
}

void CheckBox::click() {
  if (enabled()) set_checked(!checked_);
}

void CheckBox::mouse_move(int x) {
  if (on_mouse_move) on_mouse_move(x);
}

void CheckBox::accept(ControlVisitor& visitor) { visitor.visit(*this); }

OptionGroup::OptionGroup(ControlRegistry& form, std::string name, Page page, std::string caption,
                         std::string tooltip, std::vector<std::string> options, int first,
                         int chosen)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)),
      options_(std::move(options)),
      first_(first),
      chosen_(chosen) {}

const std::string& OptionGroup::option(int number) const {
  if (number < first() || number > last()) out_of_range();
  return options_[static_cast<std::size_t>(number - first_)];
}

void OptionGroup::choose(int number) {
  if (number < first() || number > last()) out_of_range();
  if (number != chosen_) {
    chosen_ = number;
    changed();
  }
  run(on_choose);
}

void OptionGroup::accept(ControlVisitor& visitor) { visitor.visit(*this); }

Slider::Slider(ControlRegistry& form, std::string name, Page page, std::string caption,
               std::string tooltip, std::int32_t minimum, std::int32_t maximum,
               std::int32_t position)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)),
      minimum_(minimum),
      maximum_(maximum),
      position_(position) {}

void Slider::set_position(std::int32_t position) {
  position = std::clamp(position, minimum_, maximum_);
  if (position == position_) return;
  position_ = position;
  changed();
  run(on_change);
}

void Slider::accept(ControlVisitor& visitor) { visitor.visit(*this); }

Label::Label(ControlRegistry& form, std::string name, Page page, std::string caption,
             std::string tooltip, std::string text)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)),
      text_(std::move(text)) {}

void Label::set_text(std::string text) {
  if (text == text_) return;
  text_ = std::move(text);
  changed();
}

void Label::click() {
  if (enabled()) run(on_click);
}

void Label::accept(ControlVisitor& visitor) { visitor.visit(*this); }

ComboList::ComboList(ControlRegistry& form, std::string name, Page page, std::string caption,
                     std::string tooltip)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)) {}

void ComboList::set_text(std::string text) {
  if (text == text_) return;
  text_ = std::move(text);
  changed();
}

void ComboList::add(std::string item) {
  if (items_.size() >= kMostItems) throw PlatformError(Errc::out_of_memory);
  items_.push_back(std::move(item));
  changed();
}

void ComboList::remove_item(std::size_t row) {
  if (row < 1 || row > items_.size()) out_of_range();
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(row - 1));
  changed();
}

void ComboList::clear() {
  if (items_.empty()) return;
  items_.clear();
  changed();
}

void ComboList::enter(std::string text) {
  if (!enabled()) return;
  set_text(std::move(text));
  run(on_enter);
}

void ComboList::press_delete(std::size_t row) {
  if (row < 1 || row > items_.size()) out_of_range();
  if (enabled() && on_delete) on_delete(row);
}

void ComboList::accept(ControlVisitor& visitor) { visitor.visit(*this); }

Button::Button(ControlRegistry& form, std::string name, Page page, std::string caption,
               std::string tooltip)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)) {}

void Button::click() {
  if (enabled()) run(on_click);
}

void Button::set_back_colour(std::int32_t colour) {
  if (colour == back_colour_) return;
  back_colour_ = colour;
  changed();
}

void Button::accept(ControlVisitor& visitor) { visitor.visit(*this); }

Picture::Picture(ControlRegistry& form, std::string name, Page page, std::string caption,
                 std::string tooltip, bool visible)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)) {
  set_visible(visible);
}

void Picture::move_over() {
  if (visible()) run(on_move);
}

void Picture::accept(ControlVisitor& visitor) { visitor.visit(*this); }

MenuItem::MenuItem(ControlRegistry& form, std::string name, std::string caption)
    : Control(form, std::move(name), Page::window, std::move(caption), {}) {}

void MenuItem::click() {
  if (enabled()) run(on_click);
}

void MenuItem::accept(ControlVisitor& visitor) { visitor.visit(*this); }

Window::Window(ControlRegistry& form, std::string name, std::string caption, std::string tooltip,
               bool shown, bool has_text)
    : Control(form, std::move(name), Page::window, std::move(caption), std::move(tooltip)),
      has_text_(has_text) {
  set_visible(shown);
}

void Window::show() {
  if (shown()) {
    changed();
  } else {
    set_visible(true);
  }
}

void Window::set_text(std::string text) {
  if (text == text_) return;
  text_ = std::move(text);
  changed();
}

void Window::append_text(std::string_view text) {
  if (text.empty()) return;
  text_ += text;
  changed();
}

void Window::accept(ControlVisitor& visitor) { visitor.visit(*this); }

StatusBar::StatusBar(ControlRegistry& form, std::string name, std::size_t panels)
    : Control(form, std::move(name), Page::window, {}, {}), texts_(panels) {}

const std::string& StatusBar::panel(std::size_t number) const {
  if (number < 1 || number > texts_.size()) out_of_range();
  return texts_[number - 1];
}

void StatusBar::set_panel(std::size_t number, std::string text) {
  const bool same = panel(number) == text;
  if (same && number > 1) return;
  if (number == 1) {
    ++times_said_;
    has_note_ = false;
  }
  texts_[number - 1] = std::move(text);
  changed();
}

void StatusBar::set_note(std::string text) {
  set_panel(1, std::move(text));
  has_note_ = true;
}

void StatusBar::drop_note() {
  if (has_note_) set_panel(1, {});
}

void StatusBar::accept(ControlVisitor& visitor) { visitor.visit(*this); }

Progress::Progress(ControlRegistry& form, std::string name, Page page, std::string caption,
                   std::string tooltip)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)) {
  set_visible(false);
}

void Progress::show(std::string text, std::size_t done, std::size_t total) {
  text_ = std::move(text);
  done_ = done;
  total_ = total;
  if (running()) {
    changed();
  } else {
    set_visible(true);
  }
}

void Progress::finish() {
  text_.clear();
  done_ = 0;
  total_ = 0;
  set_visible(false);
}

void Progress::accept(ControlVisitor& visitor) { visitor.visit(*this); }

std::string ListSource::row_key(std::size_t row) const { return std::to_string(row); }

std::optional<RowProgress> ListSource::progress(std::size_t /*row*/) const { return {}; }

std::string ListSource::cell_tooltip(std::size_t row, std::size_t column) const {
  return cell(row, column);
}

ListView::ListView(ControlRegistry& form, std::string name, Page page, std::string caption,
                   std::string tooltip, std::vector<std::string> columns)
    : Control(form, std::move(name), page, std::move(caption), std::move(tooltip)),
      columns_(std::move(columns)) {}

// A row that the source has lost since the last redraw is shown empty until the next one.
std::string ListView::cell(std::size_t row, std::size_t column) const {
  check(row);
  if (column < 1 || column > columns_.size()) out_of_range();
  return has(row) ? source_->cell(row, column) : std::string();
}

std::string ListView::cell_tooltip(std::size_t row, std::size_t column) const {
  check(row);
  if (column < 1 || column > columns_.size()) out_of_range();
  return has(row) ? source_->cell_tooltip(row, column) : std::string();
}

std::string ListView::row_key(std::size_t row) const {
  check(row);
  return has(row) ? source_->row_key(row) : std::string();
}

std::optional<RowProgress> ListView::progress(std::size_t row) const {
  check(row);
  return has(row) ? source_->progress(row) : std::nullopt;
}

std::size_t ListView::row_of(std::string_view key, std::size_t guess) const {
  const std::size_t last = source_ == nullptr ? 0 : source_->rows();
  if (guess >= 1 && guess <= last && source_->row_key(guess) == key) return guess;
  for (std::size_t row = 1; row <= last; ++row) {
    if (source_->row_key(row) == key) return row;
  }
  return 0;
}

std::size_t ListView::selected() const {
  return selected_ == 0 ? 0 : row_of(selected_key_, selected_);
}

void ListView::redraw(std::size_t most) {
  shown_rows_ = source_ == nullptr ? 0 : std::min(source_->rows(), most);
  // A redraw is part of many a change and does not fail: an entry that cannot be looked for is
  // taken to stand where it stood.
  try {
    selected_ = selected();
  } catch (const std::exception&) {
  }
  if (selected_ > shown_rows_) selected_ = 0;
  ++version_;
  changed();
}

void ListView::select(std::size_t row) {
  std::string key = row_key(row);
  if (row == selected_ && key == selected_key_) return;
  selected_ = row;
  selected_key_ = std::move(key);
  changed();
}

void ListView::activate(std::size_t row) {
  select(row);
  if (on_activate) on_activate(row);
}

void ListView::accept(ControlVisitor& visitor) { visitor.visit(*this); }

bool ListView::has(std::size_t row) const { return source_ != nullptr && row <= source_->rows(); }

void ListView::check(std::size_t row) const {
  if (row < 1 || row > shown_rows_) out_of_range();
}

}  // namespace velmora
