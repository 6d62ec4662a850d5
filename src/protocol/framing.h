// Cuts the bytes of one data-arrival event into descriptors and hands each to its handler. Kept:
// framing is per chunk, nothing is held between two events; where whole descriptors are wanted the
// chunk is what PendingBytes makes of the stream. It knows connections by index only, and neither
// reads nor forwards anything itself.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "protocol/descriptor_header.h"

namespace velmora {

// Who handles what the framing cuts. `data` is the whole rest of the chunk, header included (the
// payload starts at its byte 24, and may be shorter than the header says, or be followed by more).
class DescriptorHandlers {
 public:
  virtual ~DescriptorHandlers() = default;
  virtual void count_received(std::size_t connection) = 0;  // one descriptor was cut
  virtual void got_ping(const DescriptorHeader&, std::string_view data, std::size_t connection) = 0;
  virtual void got_pong(const DescriptorHeader&, std::string_view data, std::size_t connection) = 0;
  virtual void got_query(const DescriptorHeader&, std::string_view data,
                         std::size_t connection) = 0;
  virtual void got_query_reply(const DescriptorHeader&, std::string_view data,
                               std::size_t connection) = 0;
  virtual void got_push(const DescriptorHeader&, std::string_view data, std::size_t connection) = 0;
  virtual void got_unknown(const DescriptorHeader&, std::size_t connection) = 0;
};

// How many descriptors are handled in one turn of the loop; the rest of the chunk waits for the
// next turn while other events run.
inline constexpr int kDescriptorsPerTurn = 256;

class Framing {
 public:
  Framing(DescriptorHandlers& handlers, DebugLog& log, const Behaviour& behaviour = kClassic)
      : handlers_(handlers), log_(log), behaviour_(behaviour) {}

  // Handles at most so many descriptors of the chunk. Returns how many bytes of it are
  // done with: all of them, or fewer when the rest is to be offered again with `first` false.
  std::size_t Format_in_data(std::string_view data, std::size_t connection, bool first = true,
                             int most = kDescriptorsPerTurn);

 private:
  void dispatch(const DescriptorHeader& header, std::string_view data, std::size_t connection);

  DescriptorHandlers& handlers_;
  DebugLog& log_;
  const Behaviour& behaviour_;
};

}  // namespace velmora
