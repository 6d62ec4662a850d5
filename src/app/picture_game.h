// The hidden game of the configuration page: two pictures that swap places under the mouse, and a
// count of the swaps that in the end closes the program. It wires the pictures; the program says
// what ending means.
#pragma once

#include <cstdint>
#include <functional>

#include "form/form.h"

namespace velmora {

class PictureGame {
 public:
  PictureGame(Form& form, std::function<void()> end_program);

 private:
  void caught();

  Form& form_;
  std::function<void()> end_program_;
  std::int16_t moves_ = 0;  // never reset
};

}  // namespace velmora
