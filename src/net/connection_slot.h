// One message connection as people see it: a row of the list of connected hosts. It owns nothing;
// the socket and the timers of the same index belong to MessageConnections.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora {

// A slot whose state is below 1 is free and can be used again.
enum SlotState : std::int16_t {
  kNeverUsed = 0,
  kOpening = 1,    // the handshake is not complete
  kConnected = 2,  // descriptors flow
  kClosing = 255,  // waits for the free timer
  kFreed = -1,
};

struct ConnectionSlot {
  std::string address;
  std::int16_t port = 0;  // two's complement
  std::string host_name;
  std::string direction;  // "In" or "Out"
  // Descriptors forwarded to it, cut from its data, and refused from it; single precision.
  float sent = 0;
  float received = 0;
  float dropped = 0;
  std::int16_t silence_ticks = 0;  // ticks of timeout_msg_t since data last came
  std::int16_t local_port = 0;     // two's complement
  std::string status;
  std::int32_t socket = 0;  // the slot's own index
  std::int16_t state = kNeverUsed;
};

// Adds 1 so many times. Kept: in single precision a count stands still at 16,777,216.
inline void count_up(float& count, std::size_t times) {
  constexpr float kStandsStill = 16'777'216;
  count = std::min(count + static_cast<float>(times), kStandsStill);
}

// A change of a slot: an empty text or a zero leaves its field as it is.
struct SlotChange {
  std::string address = {};
  std::int16_t port = 0;
  std::string host_name = {};
  std::string direction = {};
  std::int16_t local_port = 0;
  std::string status = {};
  std::int16_t state = 0;
  bool reset_counts = false;
  bool reset_ticks = false;
  bool add_tick = false;
};

}  // namespace velmora
