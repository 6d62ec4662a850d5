// How an upload server of this program says that a person stopped the upload: as the last thing in
// the stream, "VelMora-Stop: ", a decimal byte count, CR LF, and a text of that many bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace velmora {

struct StopMessage {
  std::size_t begin;      // where in the block the message begins
  std::string_view text;  // inside the block
};

// The message with which the block ends, if it ends in one whole message of at most 16 KiB.
std::optional<StopMessage> find_stop_message(std::string_view block);

// A longer text would often arrive in pieces; none is sent, and the rest of none is waited for.
inline constexpr std::size_t kMaxStopText = 1024;

// Where in the block a message may have begun of which the rest has not come; its size if nowhere.
std::size_t begun_stop_message(std::string_view block);

}  // namespace velmora
