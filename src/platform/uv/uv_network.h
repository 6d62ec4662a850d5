// The real Network of one servent: TCP over IPv4 on one loop, all of it bound to one address or to
// none in particular. It owns every connection that holds a descriptor, those included whose Socket
// is gone and whose last bytes still leave; it outlives the Sockets and Listeners made by it.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/network.h"
#include "platform/uv/uv_descriptor.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {

class UvConnection;

// A peer that takes nothing of what was sent to it for so long is given up: its connection ends as
// if it had reset it. (A simulated network has all the time in the world.)
inline constexpr int kMaxStallMs = 120'000;

class UvNetwork : public Network, private TurnEnd {
 public:
  // The address is dotted text; an empty one and 0.0.0.0 mean all addresses of the machine.
  UvNetwork(UvLoop& loop, std::string bind_address, int max_stall_ms = kMaxStallMs);
  ~UvNetwork() override;  // what has not left is lost
  UvNetwork(const UvNetwork&) = delete;
  UvNetwork& operator=(const UvNetwork&) = delete;

  std::unique_ptr<Listener> listen(std::uint16_t port, int backlog,
                                   ListenerEvents& events) override;
  std::unique_ptr<Socket> connect(const std::string& host, std::uint16_t port, int timeout_ms,
                                  SocketEvents& events) override;

  [[nodiscard]] std::string local_address() const override;

  // Whether bytes of closed sockets are still leaving.
  [[nodiscard]] bool parting() const;

  // For its connections and listeners.
  [[nodiscard]] UvLoop& loop() const { return loop_; }
  [[nodiscard]] const std::string& bind_address() const { return bind_address_; }
  [[nodiscard]] int max_stall_ms() const { return max_stall_ms_; }
  [[nodiscard]] bool has_descriptor_to_spare() const;
  std::unique_ptr<Socket> adopt(Descriptor accepted);  // nothing if the system refuses
  void listener_opened() { ++listeners_; }
  void listener_closed() { --listeners_; }
  void flush_later(UvConnection& connection);  // when the turn ends
  void forget(UvConnection& connection);

  // Bytes unsent on all connections, or somewhat more: the kernel takes some between two counts.
  [[nodiscard]] std::size_t unsent() const { return unsent_; }
  void unsent_changed(std::size_t from, std::size_t to) { unsent_ = unsent_ - from + to; }
  // Bytes received on all connections that wait for the rest of what they end in.
  [[nodiscard]] std::size_t settling() const { return settling_; }
  void settling_changed(std::size_t from, std::size_t to) { settling_ = settling_ - from + to; }
  void make_room();  // hands over what can leave now and counts exactly

 private:
  void on_turn_end() override;
  std::shared_ptr<UvConnection> make_connection(SocketEvents* events);

  UvLoop& loop_;
  std::string bind_address_;
  int max_stall_ms_;
  // The machine's primary address as it was last looked up; asking the system costs too much for
  // every descriptor that names it.
  mutable std::string primary_address_;
  mutable std::int64_t primary_until_ms_ = 0;
  std::unordered_map<UvConnection*, std::shared_ptr<UvConnection>> connections_;
  std::vector<std::shared_ptr<UvConnection>> planned_;
  std::vector<std::shared_ptr<UvConnection>> leaving_;  // being flushed
  std::size_t listeners_ = 0;
  std::size_t unsent_ = 0;
  std::size_t settling_ = 0;
};

}  // namespace velmora::uv
