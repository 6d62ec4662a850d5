// The lenient number of a field that is read for every descriptor and changes hardly ever: it reads
// the text anew only when that is another one than last time. Owned by whoever asks; one object
// serves one field.
#pragma once

#include <string>

#include "platform/number.h"

namespace velmora {

class FieldNumber {
 public:
  // As val(); its errors come every time.
  double of(const std::string& text) {
    if (text != text_) {
      number_ = val(text);
      text_ = text;
    }
    return number_;
  }

 private:
  std::string text_;
  double number_ = 0;  // of the empty text
};

}  // namespace velmora
