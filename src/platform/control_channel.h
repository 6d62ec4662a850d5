// What the control socket asks of the machine: a local stream socket on which people's programs
// talk in lines. It knows nothing of what the lines say. Only the profile's owner can connect.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::size_t kMaxControlLine = std::size_t{16}
                                               << 20;  // a longer one ends the client
inline constexpr std::size_t kMaxControlUnsent = std::size_t{64}
                                                 << 20;  // likewise a client this far behind
inline constexpr std::size_t kMaxControlClients = 64;

class ControlChannelEvents {
 public:
  virtual ~ControlChannelEvents() = default;
  virtual void on_client_line(std::uint64_t client, std::string_view line) = 0;  // without its end
  virtual void on_client_gone(std::uint64_t client) = 0;
};

class ControlChannel {
 public:
  virtual ~ControlChannel() = default;
  // Listens on a socket file of this name in the profile folder, mode 0600; a stale file of an
  // ended program is replaced. Raises a PlatformError.
  virtual void open(const std::string& name, ControlChannelEvents& events) = 0;
  virtual void send_line(std::uint64_t client, std::string_view line) = 0;  // adds the line end
  // Stops listening, removes the socket file; lines already sent still leave.
  virtual void close() = 0;
};

}  // namespace velmora
