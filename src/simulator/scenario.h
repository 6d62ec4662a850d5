// What one seed stands for: a network of servents, their people, strangers and faults, run in
// virtual time with every check after every event. The same seed and sizes give the same run.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "simulator/platform_watch.h"

namespace velmora::simulator {

struct ScenarioOptions {
  std::uint64_t seed = 1;
  std::size_t servents = 0;        // 0: the seed chooses, 5 to 30, mostly few
  std::int64_t seconds = 0;        // 0: the seed chooses, 60 to 600, mostly few
  Plant plant = Plant::none;       // must make the run fail
  bool allocation_faults = false;  // the program has the operators of failing_new.cpp
  std::function<void(const std::string& line)> tell;  // told what happens; may be empty
};

struct ScenarioResult {
  std::string fault;  // "" when everything held
  std::int64_t time_ms = 0;
  std::size_t servents = 0;
  std::int64_t seconds = 0;
  std::uint64_t checks = 0;
  std::uint64_t forwarded = 0;
  std::uint64_t files_finished = 0;
};

ScenarioResult run_scenario(const ScenarioOptions& options);

}  // namespace velmora::simulator
