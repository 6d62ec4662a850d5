// The text of the window frmUnknown: a line for every descriptor of an unknown function, newest
// first. It keeps the newest 65,535 characters; the counter of unknown descriptors is elsewhere.
#pragma once

#include <string>

#include "form/control.h"
#include "protocol/descriptor_header.h"

namespace velmora {

class UnknownLog {
 public:
  static constexpr std::size_t kMostCharacters = 65535;

  explicit UnknownLog(Window& frmUnknown) : window_(frmUnknown) {}
  void add(const DescriptorHeader& header);

 private:
  Window& window_;
};

}  // namespace velmora
