#include "app/picture_game.h"

#include <utility>

#include "platform/number.h"

namespace velmora {

PictureGame::PictureGame(Form& form, std::function<void()> end_program)
    : form_(form), end_program_(std::move(end_program)) {
  form_.mascot1.on_move = [this] {
    form_.mascot1.set_visible(false);
    form_.mascot2.set_visible(true);
  };
  form_.mascot2.on_move = [this] { caught(); };
}

void PictureGame::caught() {
  form_.mascot2.set_visible(false);
  form_.mascot1.set_visible(true);
  moves_ = to_int16(moves_ + 1.0);
  if (moves_ > 200) form_.mascot3.set_visible(true);
  if (moves_ > 250) form_.mascot_text.set_visible(true);
  if (moves_ > 270) form_.mascot_text.set_text("You better stop");
  if (moves_ > 300) form_.mascot_text.set_text("Alright... Bye...");
  if (moves_ > 330) end_program_();
}

}  // namespace velmora
