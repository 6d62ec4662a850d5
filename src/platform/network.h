// What the engine asks of the network: TCP listeners, connections accepted and made, all of them
// non-blocking, binary, IPv4. A Socket is the "socket element" of the program's socket arrays; who
// holds the unique_ptr owns the connection. Addresses are dotted text, ports 0 to 65535.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace velmora {

// A slow reader may hold this many unsent bytes on one socket, and all sockets of one network
// together that many; a write beyond either raises "No buffer space available" and sends nothing.
inline constexpr std::size_t kMaxUnsentPerSocket = std::size_t{1} << 20;
inline constexpr std::size_t kMaxUnsentTotal = std::size_t{64} << 20;

// What one read brings at most, or a little more, to end where one of the peer's strings ends. Much
// more would no longer lie in a processor's cache when it is handled, and would take too long.
inline constexpr std::size_t kMostReadAtOnce = std::size_t{256} << 10;
// Said by a receiver that throws away the rest of what is queued, and so needs all of it at once.
inline constexpr std::size_t kLacksAllQueued = static_cast<std::size_t>(-1);

// Events of one socket. The receiver may write to, close or destroy the socket inside any of them.
class SocketEvents {
 public:
  virtual ~SocketEvents() = default;
  virtual void on_connect() = 0;                    // an outgoing connection stands
  virtual void on_connect_failed() = 0;             // refused, unreachable, or its time-out ran out
  virtual void on_read(std::string_view data) = 0;  // what was queued; valid in the call only
  virtual void on_disconnect() = 0;                 // the peer closed or reset; comes once, last
  // Asked before on_read: how many bytes are lacking for `queued` to end where one of the peer's
  // strings ends; 0 when it does, and when that cannot be known. They get a moment to arrive.
  // kLacksAllQueued: whatever else is queued, and nothing that is not.
  [[nodiscard]] virtual std::size_t lacks(std::string_view) const { return 0; }
};

// Destroying a socket closes it: no event comes any more. Bytes already written still leave, for a
// few seconds at most, and the peer sees an orderly end.
class Socket {
 public:
  virtual ~Socket() = default;

  virtual void set_events(SocketEvents* events) = 0;  // not owned

  // Queues the bytes; they leave gathered with others at the end of this turn of the loop.
  // Errors: "No buffer space available"; "Not connected" when there is no standing connection.
  virtual void write(std::string_view data) = 0;
  // The same for strings in a row, `ends` being the offsets at which they end: where a network has
  // packets, those that fit one travel in one.
  virtual void write_run(std::string_view data, std::span<const std::uint32_t>) { write(data); }
  // The same for a string that must arrive as one read of its own: it leaves alone, and nothing
  // written later follows it before the next turn, nor before the peer can have read it.
  virtual void write_alone(std::string_view data) = 0;

  // While reading is off no on_read comes; the peer's bytes wait in the kernel.
  virtual void set_reading(bool reading) = 0;

  [[nodiscard]] virtual bool connected() const = 0;
  [[nodiscard]] virtual std::size_t unsent() const = 0;  // bytes not yet handed to the kernel
  [[nodiscard]] virtual std::size_t unacknowledged() const = 0;  // those and what the peer lacks
  [[nodiscard]] virtual std::string peer_address() const = 0;
  [[nodiscard]] virtual std::uint16_t peer_port() const = 0;
  [[nodiscard]] virtual std::uint16_t local_port() const = 0;
};

class ListenerEvents {
 public:
  virtual ~ListenerEvents() = default;
  virtual void on_accept(std::unique_ptr<Socket> pending) = 0;
};

class Listener {
 public:
  virtual ~Listener() = default;
  // While accepting is off, connections wait in the backlog.
  virtual void set_accepting(bool accepting) = 0;
  [[nodiscard]] virtual std::uint16_t local_port() const = 0;
};

class Network {
 public:
  virtual ~Network() = default;

  // Errors: "Address already in use" and whatever else the system says.
  virtual std::unique_ptr<Listener> listen(std::uint16_t port, int backlog,
                                           ListenerEvents& events) = 0;
  // Starts to connect; exactly one of on_connect and on_connect_failed follows, never inside this
  // call. The host is a dotted address or a name; addresses that nobody can have (0.x, 224.x and
  // up, port 0) fail without a packet. A time-out of 0 means none.
  virtual std::unique_ptr<Socket> connect(const std::string& host, std::uint16_t port,
                                          int timeout_ms, SocketEvents& events) = 0;

  // The address that listeners of this network have. Never 0.0.0.0: when they listen on all
  // addresses it is the machine's primary one.
  [[nodiscard]] virtual std::string local_address() const = 0;
};

}  // namespace velmora
