#include "app/colour_chooser.h"

#include <fmt/format.h>

#include <string>

namespace velmora {

std::array<Button*, 5> colour_buttons(Form& form) {
  return {&form.form_b_sel, &form.form_f_sel, &form.but_b_sel, &form.list_b_sel, &form.list_f_sel};
}

void apply_colors(Form& form) {
  for (Button* button : colour_buttons(form)) {
    if (button->back_colour() == 0) button->set_back_colour(kButtonFace);
  }
}

ColourChooser::ColourChooser(Form& form) : form_(form) {
  int selector = 0;
  for (Button* button : colour_buttons(form)) {
    button->on_click = [this, number = ++selector] { open_for(number); };
  }
  const auto follow = [this](Slider& slider, Label& label) {
    slider.on_change = [this, &slider, &label] {
      label.set_text(std::to_string(slider.position()));
      preview();
    };
  };
  follow(form.Red, form.Red_label);
  follow(form.Green, form.Green_label);
  follow(form.Blue, form.Blue_label);
  form.ok.on_click = [this] { use(); };
  preview();
}

void ColourChooser::open_for(int selector) {
  selector_ = selector;
  const std::int32_t colour =
      colour_buttons(form_).at(static_cast<std::size_t>(selector - 1))->back_colour();
  if (colour > 0) {  // colours of the system are negative
    form_.Red.set_position(colour & 0xFF);
    form_.Green.set_position(colour >> 8 & 0xFF);
    form_.Blue.set_position(colour >> 16 & 0xFF);
  }
  form_.frmColor.show();
}

std::int32_t ColourChooser::mixed() const {
  return form_.Red.position() + form_.Green.position() * 256 + form_.Blue.position() * 65536;
}

void ColourChooser::preview() {
  form_.preview.set_text(fmt::format("#{:02X}{:02X}{:02X}", form_.Red.position(),
                                     form_.Green.position(), form_.Blue.position()));
}

void ColourChooser::use() {
  if (!form_.frmColor.shown() || selector_ == 0) return;
  preview();
  colour_buttons(form_).at(static_cast<std::size_t>(selector_ - 1))->set_back_colour(mixed());
  apply_colors(form_);
  form_.frmColor.hide();
}

}  // namespace velmora
