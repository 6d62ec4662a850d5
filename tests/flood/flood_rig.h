// A servent in a network namespace of its own, strangers that flood it, and what the flood did to
// it: its memory, how late its timers are, how long a good neighbour waits for the answer to a
// ping. Strangers are threads with blocking sockets; they end with the rig.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "process/program.h"

namespace velmora::flood {

inline constexpr std::uint16_t kMessagePort = 6346;
inline constexpr std::uint16_t kUploadPort = 6345;

// Moves this process into a network namespace with nothing but loopback; once. False where the
// system does not allow that.
bool enter_own_network();

using process::Line;

struct Measured {
  double memory_mib = 0;    // the most that was resident
  double timer_p99_ms = 0;  // how late the 500 ms refresh was
  double timer_worst_ms = 0;
  double ping_worst_ms = 0;
  std::size_t pings = 0;
  std::size_t unanswered = 0;
};

class FloodRig {
 public:
  explicit FloodRig(std::vector<std::string> fields = {});
  ~FloodRig();
  FloodRig(const FloodRig&) = delete;
  FloodRig& operator=(const FloodRig&) = delete;

  // A thread that begins when the measuring does, and is to look at `over` often.
  void stranger(std::function<void(const std::atomic<bool>& over)> body);
  // Lets the strangers work for so many seconds beside a good neighbour.
  Measured measure(double seconds);
  // What the control socket says of a control; JSON as it comes.
  std::string ask(const std::string& method, const std::string& params);
  // Written when the strangers have ended.
  void note(std::string text) { notes_.push_back(std::move(text)); }
  [[nodiscard]] std::string folder() const { return folder_.path(); }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<process::Program> servent_;
  std::atomic<bool> begun_{false};
  std::atomic<bool> over_{false};
  std::vector<std::thread> strangers_;
  std::vector<std::string> notes_;  // by one stranger at most
};

}  // namespace velmora::flood
