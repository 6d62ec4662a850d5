// The message connections: the TCP connections over which descriptors flow. It owns the listening
// socket (element 0 of the `msg` array), every connection's socket with its timer, and the
// array connection_slots that describes them; all three share one index. It does the handshake,
// drops silent peers, and frees a slot 5000 ms after its connection ended. What the bytes mean is
// the framing's business, where they go the router's.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "form/form.h"
#include "net/broadcast_run.h"
#include "net/connection_slot.h"
#include "net/connection_watch.h"
#include "net/message_socket.h"
#include "net/routing_table.h"
#include "net/traffic_counters.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/one_based.h"
#include "platform/platform.h"
#include "protocol/framing.h"

namespace velmora {

// At most so many connections may be opening at a time; further ones wait to be accepted.
inline constexpr std::size_t kMaxOpening = 200;
// While so many are opening, those that have been at it for longer than this are let go of; a peer
// that sends a byte now and then would otherwise stay in the way for ever.
inline constexpr std::int64_t kMaxOpeningMs = 10'000;
// Received bytes that wait for their turn, on all connections together.
inline constexpr std::size_t kMaxWaitingBytes = std::size_t{32} << 20;
// Slot indexes are 16-bit numbers.
inline constexpr std::size_t kMaxConnections = 32767;

class MessageConnections : public ListenerEvents, private MessageSocketOwner, private CopyTaker {
 public:
  MessageConnections(EventLoop& loop, Network& network, Form& form, DebugLog& log,
                     TrafficCounters& counters, RoutingTable& routes,
                     const Behaviour& behaviour = kClassic);
  ~MessageConnections() override;

  // The framing that is given every chunk of descriptor data; set once, before anything connects.
  void deliver_to(Framing& framing) { framing_ = &framing; }

  // Who is told what becomes of the connections; not owned.
  void watched_by(ConnectionWatch& watch) { watch_ = &watch; }

  // Opens element 0; an earlier listener is closed first. Raises the platform's error.
  void listen(std::uint16_t port);
  // What the socket layer reports for element 0; the port is 0 while nothing listens.
  [[nodiscard]] std::string local_address() const;
  [[nodiscard]] std::int16_t local_port() const;

  // Returns "" when the attempt has started, else the message to show.
  std::string connect_out(const std::string& address, std::int16_t port,
                          const std::string& host_name);

  // Sends the string on a connection; no state is checked. Raises the platform's error, and
  // "Overflow" for a string longer than 32767 bytes.
  void msgwrite(std::size_t index, std::string_view data);
  // Where the router puts what goes to all connections but the one that it came from; it is
  // written when the chunk's turn ends, and before anything else is written to one of them.
  [[nodiscard]] BroadcastRun& to_all_others() { return run_; }

  // Starts the free timer of a connection whose socket is gone or being closed.
  void free_msg_socket(std::size_t index);

  // A person ends the connection: closes its socket at once. Nothing for a free slot.
  void disconnect(std::size_t index);

  void set_hosts_stat(std::size_t index, const SlotChange& change);

  // Slots 1 to the upper bound; the router raises the counts of a slot, but for broadcast copies.
  [[nodiscard]] OneBased<ConnectionSlot>& connection_slots() { return slots_; }
  [[nodiscard]] const OneBased<ConnectionSlot>& connection_slots() const { return slots_; }
  // Whether descriptors flow on it; index 0 and others out of range are not connected.
  [[nodiscard]] bool connected(std::size_t index) const;
  // Those on which they do, ascending; what is written to them does not change it.
  [[nodiscard]] std::span<const std::size_t> connected_ones() const override { return connected_; }
  [[nodiscard]] std::size_t unsent(std::size_t index) const;
  // Differs between the connections that one slot has after one another; 0: there is no element.
  [[nodiscard]] std::uint64_t generation(std::size_t index) const;
  // Whether there is an element, and whether its socket's connection stands.
  [[nodiscard]] bool loaded(std::size_t index) const;
  [[nodiscard]] bool stands(std::size_t index) const;

  // Recounts count_in and count_out; the list refresh calls it. The inbound limit is tested
  // against the last refresh, so a burst can pass it.
  void recount();
  [[nodiscard]] std::int16_t count_in() const { return count_in_; }
  [[nodiscard]] std::int16_t count_out() const { return count_out_; }

  // A switch moved: what waits for whole descriptors is let go of when they are not wanted.
  void behaviour_changed();

  // Unloads every socket in use.
  void close_all();

  void on_accept(std::unique_ptr<Socket> pending) override;

 private:
  std::size_t free_index() const;
  void Connect_in_msg_socket(std::size_t index, std::unique_ptr<Socket> pending);
  void start_connect(std::size_t index, const std::string& address, std::int16_t port,
                     const std::string& host_name);
  MessageSocket& load(std::size_t index);
  template <class SetUp>
  void set_up(std::size_t index, SetUp&& body);
  void unload(std::size_t index);
  void load_timeout(std::size_t index);
  void connection_stands(std::size_t index, const char* way);
  void set_state(ConnectionSlot& slot, std::size_t index, std::int16_t state);
  void note_opening_change();
  void end_old_openings();

  // Events of element `index`.
  void msg_Connect(std::size_t index) override;
  void msg_Timeout(std::size_t index) override;
  void msg_Read(std::size_t index, std::string_view data) override;
  void msg_Disconnect(std::size_t index) override;
  void timeout_msg_t_Timer(std::size_t index);
  void free_msgsock_t_Timer(std::size_t index);

  void take_copies(std::size_t connection, std::string_view bytes,
                   std::span<const std::uint32_t> ends) override;
  Socket& socket_for(std::size_t index, std::string_view data);

  void deliver(std::size_t index, std::string_view data);
  void hand_over(std::size_t index, std::string_view data, bool first);
  std::size_t cut(std::size_t index, std::string_view data, bool first);
  void keep_rest(MessageSocket& element, std::string_view rest);
  void let_go_of_rest(MessageSocket& element);
  void note_spent(std::int64_t& since_ms);
  void plan_line();
  void serve_line();
  bool continue_chunk(std::size_t index, std::uint64_t generation);
  void drop_rest(std::size_t index);

  // A connection with a chunk that is not done.
  struct Waiting {
    std::size_t index;
    std::uint64_t generation;
  };

  EventLoop& loop_;
  Network& network_;
  Form& form_;
  DebugLog& log_;
  TrafficCounters& counters_;
  RoutingTable& routes_;
  const Behaviour& behaviour_;
  Framing* framing_ = nullptr;
  ConnectionWatch* watch_ = nullptr;
  std::unique_ptr<Listener> listener_;
  OneBased<ConnectionSlot> slots_{kMaxConnections};
  OneBased<std::unique_ptr<MessageSocket>> elements_{kMaxConnections};
  std::vector<std::size_t> connected_;  // kept up to date with the slots' states
  BroadcastRun run_;
  std::uint64_t generations_ = 0;
  std::deque<Waiting> line_;
  bool line_planned_ = false;
  std::size_t waiting_bytes_ = 0;  // in the rests of all elements
  std::int64_t spent_ms_ = 0;      // by the framing in this turn
  std::size_t opening_ = 0;
  std::unique_ptr<Timer> opening_check_;  // on since there were too many
  std::int16_t count_in_ = 0;
  std::int16_t count_out_ = 0;
  // Continuations outlive nothing: they look here whether the connections still exist.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace velmora
