#include "platform/sim/sim_recorder.h"

#include <fmt/format.h>

#include <iterator>

namespace velmora::sim {

std::string Recorder::text() const {
  std::string text;
  for (const TranscriptEntry& entry : entries_) {
    fmt::format_to(std::back_inserter(text), "{} {} #{} {} peer={} port={} ", entry.time_us,
                   entry.host, entry.socket, entry.kind, entry.peer, entry.local_port);
    for (const char byte : entry.data) {
      fmt::format_to(std::back_inserter(text), "{:02x}", static_cast<unsigned char>(byte));
    }
    text += '\n';
  }
  return text;
}

}  // namespace velmora::sim
