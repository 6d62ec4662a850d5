#include "simulator/random_hand.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace velmora::simulator {
namespace {

constexpr std::size_t kMostRowsLookedAt = 20;

bool left_to_others(const Control& control) {
  return control.name() == "down_config" || control.name() == "download_browse_config" ||
         control.name() == "mnuexit";
}

}  // namespace

std::string RandomHand::touch(Form& form) {
  std::vector<Control*> controls;
  form.for_each([&](Control& control) {
    if (!left_to_others(control)) controls.push_back(&control);
  });
  Control& control = *controls.at(chance_.below(controls.size()));
  control.accept(*this);
  return control.name();
}

std::string RandomHand::text() {
  static constexpr std::array<const char*, 16> kTexts = {
      "",      "0",     "1",    "7",    "20",  "-1",       "1e9",
      "65535", "6346",  "6345", "blue", "24.", "24.0.0.1", "24.0.0.2:6346",
      "1.2.3", "/share"};
  const std::size_t which = chance_.below(kTexts.size() + 2);
  if (which < kTexts.size()) return kTexts.at(which);
  std::string bytes(chance_.below(300), '\0');
  for (char& byte : bytes) byte = static_cast<char>(chance_.below(256));
  return bytes;
}

void RandomHand::visit(TextField& control) {
  std::string typed = text();
  if (chance_.below(2) == 0) return control.set_text(std::move(typed));
  control.enter(std::move(typed));
}

void RandomHand::visit(OptionGroup& control) {
  const auto options = static_cast<std::uint64_t>(control.last() - control.first()) + 1;
  control.choose(control.first() + static_cast<int>(chance_.below(options)));
}

void RandomHand::visit(Slider& control) {
  const auto range = static_cast<std::uint64_t>(control.maximum() - control.minimum());
  control.set_position(control.minimum() + static_cast<int>(chance_.below(range + 1)));
}

void RandomHand::visit(ComboList& control) {
  if (!control.items().empty() && chance_.below(2) == 0) {
    return control.press_delete(1 + chance_.below(control.items().size()));
  }
  control.enter(text());
}

void RandomHand::visit(Window& control) {
  if (chance_.below(2) == 0) return control.show();
  control.hide();
}

// Looks at the newest rows, then clicks one.
void RandomHand::visit(ListView& control) {
  const std::size_t rows = control.rows();
  for (std::size_t row = 1; row <= std::min(rows, kMostRowsLookedAt); ++row) {
    for (std::size_t column = 1; column <= control.columns().size(); ++column) {
      static_cast<void>(control.cell(row, column));
      static_cast<void>(control.cell_tooltip(row, column));
    }
  }
  if (rows == 0) return;
  const std::size_t row = 1 + chance_.below(rows);
  if (chance_.below(2) == 0) return control.select(row);
  control.activate(row);
}

}  // namespace velmora::simulator
