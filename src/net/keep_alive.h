// Keeps the servent connected while the switch "keep_alive" is on: pings a connection that is
// silent for 10 s, and again for 20, and once an outgoing connection fell, connects to hosts of the
// cache until max_out_host outgoing connections stand. One try at a time: the first after 6 s, then
// after pauses of 12 s, 24 s and so on up to 5 minutes, which begin anew with each that succeeded.
// It makes no connection itself, and leaves everything to the automatic connector while that runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "form/form.h"
#include "net/connection_watch.h"
#include "net/host_cache.h"
#include "net/message_connections.h"
#include "net/originator.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

// A slot is free again 5 s after its connection ended.
inline constexpr int kFirstPauseMs = 6000;
inline constexpr int kLongestPauseMs = 300'000;
// A host that a person left is not connected to for so long.
inline constexpr std::int64_t kLeftAloneMs = 600'000;

class KeepAlive : private ConnectionWatch {
 public:
  KeepAlive(EventLoop& loop, Form& form, DebugLog& log, MessageConnections& connections,
            Originator& originator, const HostCache& cache, const Behaviour& behaviour);

  // Back to rest; what was remembered of hosts is forgotten.
  void stop();
  // Rests when the switch is off.
  void follow_behaviour();

 private:
  // What is remembered of an address, and since when.
  struct Noted {
    std::string address;
    std::int64_t at_ms = 0;
  };
  using Notes = std::deque<Noted>;

  void silent(std::size_t index, std::int16_t ticks) override;
  void fell(std::size_t index) override;
  void left(std::size_t index) override;

  void replace_Timer();
  void try_next();
  void rest();
  [[nodiscard]] bool enough() const;
  [[nodiscard]] std::size_t next_row() const;
  [[nodiscard]] bool may_be_tried(const CacheHost& host) const;
  static void note(Notes& notes, const std::string& address, std::int64_t now_ms);
  static std::int64_t noted_ms(const Notes& notes, const std::string& address);

  EventLoop& loop_;
  Form& form_;
  DebugLog& log_;
  MessageConnections& connections_;
  Originator& originator_;
  const HostCache& cache_;
  const Behaviour& behaviour_;
  std::unique_ptr<Timer> replace_;  // on while connections are missing
  Notes tried_;                     // since connections are missing
  Notes left_;
  std::size_t leaving_ = 0;  // the slot that a person is ending
  std::size_t attempt_ = 0;  // the slot of the last try, 0: none
  std::uint64_t attempt_generation_ = 0;
};

}  // namespace velmora
