#include "net/unknown_log.h"

#include <utility>

#include "platform/number.h"

namespace velmora {

void UnknownLog::add(const DescriptorHeader& header) {
  std::string text = "Type: " + std::to_string(header.function) +
                     " Len: " + decimal_text(header.payload_length) + "\r\n" + window_.text();
  if (text.size() > kMostCharacters) text.resize(kMostCharacters);
  window_.set_text(std::move(text));
}

}  // namespace velmora
