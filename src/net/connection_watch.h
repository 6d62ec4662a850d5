// Who is told what becomes of message connections that stood. Called inside the events of the
// connections: note what happened, act later.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

class ConnectionWatch {
 public:
  virtual ~ConnectionWatch() = default;
  // Nothing has come for so many ticks of 5 s; the connection stands.
  virtual void silent(std::size_t index, std::int16_t ticks) = 0;
  // It ended by itself. The slot still tells which it was.
  virtual void fell(std::size_t index) = 0;
  // A person ends it.
  virtual void left(std::size_t index) = 0;
};

}  // namespace velmora
