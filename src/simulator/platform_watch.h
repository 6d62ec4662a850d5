// What passes the seam between one servent and its machine, as the watched platform tells it, and
// the faults that it plays there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/sim/sim_chance.h"

namespace velmora::simulator {

// What the servent holds of its machine.
struct Held {
  int sockets = 0;
  int listeners = 0;
  int timers = 0;
  int files = 0;
  int listings = 0;
  int lookups = 0;
  int locks = 0;
  int channels = 0;

  bool operator==(const Held&) const = default;
  [[nodiscard]] std::string text() const;
};

class PlatformWatch {
 public:
  virtual ~PlatformWatch() = default;
  virtual void on_entered() = 0;  // an event was handed to the servent and has been handled
  virtual void on_escaped(const std::string& error) = 0;  // it let an error out of an event
  virtual void on_read(std::uint64_t socket, std::string_view data) = 0;
  virtual void on_write(std::uint64_t socket, std::string_view data) = 0;
  virtual void on_closed(std::uint64_t socket) = 0;
  virtual void on_saved(const std::string& path, std::string_view data) = 0;
  virtual void on_loaded(const std::string& path, std::string_view data) = 0;
  virtual void on_finished(const std::string& folder, const std::string& name) = 0;
};

// A fault that no machine has; it breaks what must hold, and the checks must say so.
enum class Plant { none, forward, file, tick, leak, error };

// Each the probability that one call fails, or one event is held up.
struct SeamFaults {
  double file = 0;     // EIO, ENOSPC, EMFILE or EACCES; a write may keep its beginning
  double connect = 0;  // EMFILE or ENOBUFS
  double write = 0;    // ENOBUFS
  double accept = 0;   // EMFILE: waits half a second
  double abort = 0;    // ECONNABORTED: gone before it is accepted
};

}  // namespace velmora::simulator
