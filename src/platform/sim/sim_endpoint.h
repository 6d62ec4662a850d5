// One end of a simulated TCP connection, as a kernel keeps it: the bytes to send, the bytes that
// wait to be read, and the way to the peer with its latency, faults and flow control. Sockets and
// raw peers are thin covers over it. Events that are on their way keep it alive, so its owner may
// let go of it, inside any event too; it hears nothing more after close().
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/network.h"
#include "platform/sim/sim_internet.h"
#include "platform/sim/sim_send_queue.h"

namespace velmora::sim {

// What the sending kernel takes before bytes count as unsent, each direction.
inline constexpr std::size_t kSendBuffer = std::size_t{256} << 10;

struct EndpointName {
  std::string address;
  std::uint16_t port = 0;
};

class Endpoint : public std::enable_shared_from_this<Endpoint> {
 public:
  Endpoint(Internet& internet, EndpointName local, EndpointName peer);

  // While there are no events, data and the end of the connection wait.
  void set_events(SocketEvents* events);
  void set_reading(bool reading);
  [[nodiscard]] bool reading() const { return reading_; }

  // Leaves at the end of this turn; alone: as a segment that nothing follows before the next turn.
  void write(std::string_view data, bool alone);
  // Leaves at once as one segment, or as soon as the connection stands.
  void send(std::string segment);

  void close();        // orderly, after the bytes already written
  void end_sending();  // half of it: what comes is still read
  void reset();        // destroys what is on its way

  [[nodiscard]] bool connecting() const { return phase_ == Phase::connecting; }
  [[nodiscard]] bool connected() const { return phase_ == Phase::standing && !closing_; }
  [[nodiscard]] bool over() const { return phase_ == Phase::over || closing_; }
  [[nodiscard]] std::size_t unsent() const;
  [[nodiscard]] std::size_t unacknowledged() const;
  [[nodiscard]] const EndpointName& local() const { return local_; }
  [[nodiscard]] const EndpointName& peer() const { return peer_name_; }

  // For the handshake.
  void set_peer(const std::shared_ptr<Endpoint>& peer) { peer_ = peer; }
  void establish();   // connecting -> standing, on_connect
  void fail();        // connecting -> over, on_connect_failed
  void reset_came();  // any -> over; what waited to be read is lost
  // When a packet of this size that leaves now arrives at the peer; packets keep their order.
  std::int64_t arrival(std::size_t bytes);

 private:
  enum class Phase { connecting, standing, over };

  void plan_flush();
  void flush();
  void pump();
  [[nodiscard]] std::size_t window() const;
  void transmit(const std::string& bytes);
  void carry(std::string bytes);
  void release_held();
  void break_connection(std::int64_t time_us);
  void send_end();
  void acknowledge_later(std::size_t bytes);

  void data_came(std::string_view bytes);
  void end_came();
  void open_window();
  void plan_delivery();
  void deliver();

  Internet& internet_;
  EndpointName local_;
  EndpointName peer_name_;
  std::weak_ptr<Endpoint> peer_;
  SocketEvents* events_ = nullptr;
  Phase phase_ = Phase::connecting;

  SendQueue queue_;
  bool flush_planned_ = false;
  bool closing_ = false;
  bool ending_ = false;  // nothing more is written
  bool end_sent_ = false;
  bool broken_ = false;  // nothing that is on its way arrives any more
  std::string held_;     // segments that wait for the next one
  Scheduler::Key hold_ends_;
  std::size_t in_flight_ = 0;  // sent, not yet in the peer's kernel
  std::size_t unacked_ = 0;    // sent, not yet known to be there
  std::int64_t link_free_us_ = 0;
  std::int64_t last_arrival_us_ = 0;

  bool reading_ = true;
  std::string inbox_;
  bool end_waits_ = false;         // the peer's orderly end came, data may be before it
  bool disconnect_waits_ = false;  // over, and not told yet
};

}  // namespace velmora::sim
