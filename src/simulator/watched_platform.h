// A machine with a watcher at its seam: passes every call and event on, counts what the servent
// holds, tells the watcher what passes, plays faults, and keeps the sides apart for the allocation
// gate. An error that leaves an event of the servent is told and ends there.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/platform.h"
#include "simulator/allocation_gate.h"
#include "simulator/platform_watch.h"

namespace velmora::simulator {

// What all parts of one watched platform share. The machine and the watch are not owned.
struct Seam {
  Seam(Platform inner, PlatformWatch& watcher, std::uint64_t seed)
      : machine(inner), watch(watcher), chance(seed) {}

  // Hands an event to the servent.
  void enter(const std::function<void()>& event);
  // Whether the planted fault strikes here.
  [[nodiscard]] bool strikes(Plant here) { return plant == here && chance.below(10) == 0; }

  Platform machine;
  PlatformWatch& watch;
  sim::Chance chance;
  SeamFaults faults;
  Plant plant = Plant::none;
  Held held;
  std::uint64_t last_socket = 0;
  std::vector<std::function<void(bool yes)>> open_boxes;  // questions that wait for their person
};

class WatchedPlatform {
 public:
  WatchedPlatform(Platform machine, PlatformWatch& watch, std::uint64_t seed);
  ~WatchedPlatform();
  WatchedPlatform(const WatchedPlatform&) = delete;
  WatchedPlatform& operator=(const WatchedPlatform&) = delete;

  Platform platform();  // lives as long as this object
  [[nodiscard]] const Held& held() const;
  SeamFaults& faults();
  void plant(Plant fault);
  // A question may stay open while events go on; its person answers the oldest, or it goes away.
  void answer_box(bool yes);
  void forget_boxes();
  // What a person does through a face is an event like any other.
  void act(const std::function<void()>& action);

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace velmora::simulator
