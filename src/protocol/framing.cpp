#include "protocol/framing.h"

#include <algorithm>

#include "platform/trap.h"
#include "protocol/payloads.h"
#include "protocol/pending_bytes.h"

namespace velmora {

std::size_t Framing::Format_in_data(std::string_view data, std::size_t connection, bool first,
                                    int most) {
  std::size_t done = 0;
  const bool good = trap(log_, "Format_in_data: ", [&] {
    if (first && data.size() < kHeaderSize) {
      log_.debug_log("Format_in_data: data < 23 bytes, dropping");
    }
    for (int i = 0; i < most && data.size() - done >= kHeaderSize; ++i) {
      const std::string_view rest = data.substr(done);
      handlers_.count_received(connection);
      const DescriptorHeader header = str_to_header(rest);
      if (header.payload_length < 0) {
        // Kept: what is behind it in the chunk is dropped with it.
        const std::size_t dropped =
            behaviour_.whole_descriptors ? std::min(believed_size(rest), rest.size()) : rest.size();
        log_.debug_log("Format_in_data: Bad header length, Drop " + std::to_string(dropped) +
                       " Bytes!");
        done += dropped;
        continue;
      }
      dispatch(header, rest, connection);
      // Kept: the declared length is never compared with what is there.
      const auto declared = kHeaderSize + static_cast<std::size_t>(header.payload_length);
      done += std::min(declared, rest.size());
    }
  });
  return good && data.size() - done >= kHeaderSize ? done : data.size();
}

void Framing::dispatch(const DescriptorHeader& header, std::string_view data,
                       std::size_t connection) {
  switch (header.function) {
    case kPing:
      return handlers_.got_ping(header, data, connection);
    case kPong:
      return handlers_.got_pong(header, data, connection);
    case kQuery:
      return handlers_.got_query(header, data, connection);
    case kQueryHit:
      // Kept: decoded once from its header on and thrown away, for the line that this writes.
      str_to_query_reply(header, data, log_, behaviour_);
      return handlers_.got_query_reply(header, data, connection);
    case kPush:
      return handlers_.got_push(header, data, connection);
    default:
      return handlers_.got_unknown(header, connection);
  }
}

}  // namespace velmora
