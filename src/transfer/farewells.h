// Connections over which a whole file has come. Each is left to its server to close, since one that
// finds its client gone before its next tick takes the file for not received; after five seconds it
// is closed here. It owns the connections and their timers, so that whatever follows on the same
// element of `downl` has nothing of them.
#pragma once

#include <cstddef>
#include <list>
#include <memory>

#include "platform/event_loop.h"
#include "platform/network.h"

namespace velmora {

inline constexpr int kFarewellMs = 5000;
inline constexpr std::size_t kMostFarewells = 200;  // beyond them the oldest closes

class Farewells {
 public:
  explicit Farewells(EventLoop& loop);
  ~Farewells();

  // A connection that is gone already is no connection.
  void leave(std::unique_ptr<Socket> connection);
  void close_all();

 private:
  class Farewell;

  void over(const Farewell& farewell);

  EventLoop& loop_;
  std::list<std::unique_ptr<Farewell>> open_;  // the oldest first
};

}  // namespace velmora
