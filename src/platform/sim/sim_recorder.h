// The record of what happened to the hosts of a world, kept only when it was asked for.
#pragma once

#include <string>
#include <vector>

#include "platform/sim/sim_world.h"

namespace velmora::sim {

class Recorder {
 public:
  void start() { on_ = true; }
  void add(TranscriptEntry entry) {
    if (on_) entries_.push_back(std::move(entry));
  }
  [[nodiscard]] const std::vector<TranscriptEntry>& entries() const { return entries_; }
  [[nodiscard]] std::string text() const;

 private:
  bool on_ = false;
  std::vector<TranscriptEntry> entries_;
};

}  // namespace velmora::sim
