// A simulated machine room: virtual clock, virtual network, files in memory, for any number of
// hosts in one process. Everything that chance decides comes from one seed; the same seed and the
// same calls give the same trace, byte for byte. Nothing here sleeps or touches the real machine.
// A host is one address with its own files and screen; servents run on host.platform().
// One event is one turn of a host's loop: what it writes leaves when it ends. A posted continuation
// is an event of the same time, behind those already due. The world outlives what runs on it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"
#include "platform/sim/sim_control.h"
#include "platform/sim/sim_dns_client.h"
#include "platform/sim/sim_files.h"
#include "platform/sim/sim_folder_watcher.h"
#include "platform/sim/sim_local_services.h"
#include "platform/sim/sim_screen.h"

namespace velmora::sim {

// What the network does to traffic; changed at any time, it counts for bytes sent from then on.
// A paused reader hears of an orderly end when it reads on, of a reset at once. A write larger than
// the kernel's 256 KiB arrives in pieces. An address that was never added swallows packets: a
// connect to it ends by its time-out. The default is a quiet network: fixed latency, each turn's
// write arrives as one read.
struct NetworkConditions {
  std::int64_t latency_us = 1000;  // one way, each direction
  std::int64_t jitter_us = 0;      // up to this much more, order of bytes kept
  std::int64_t bandwidth = 0;      // bytes a second, each direction of a connection; 0: no limit
  double split_probability = 0;    // a segment is cut in two reads at a random byte
  double join_probability = 0;     // a segment waits for the next and arrives with it
  double trickle_probability = 0;  // a segment's first 64 bytes arrive one a read
  double reset_probability = 0;    // a segment is lost and the connection reset instead
  double refuse_probability = 0;   // a connect is refused
  double silent_connect_probability = 0;  // a connect is never answered
  std::size_t receive_window =
      std::size_t{256} * 1024;  // what the receiving kernel holds for a paused reader
};

struct TranscriptEntry {
  // "listen", "connecting", "connected" (outgoing), "accepted", "failed", "read" (data handed to
  // the host), "write" (accepted from the host), "disconnected" (the host is told that the peer is
  // gone), "closed" (the host closed), "reading on", "reading off"
  std::string kind;
  std::int64_t time_us = 0;
  std::string host;          // address of the host to which it happened
  std::uint64_t socket = 0;  // the same number for all events of one socket object
  std::string peer;          // address:port, where known
  std::uint16_t local_port = 0;
  std::string data;  // bytes of a read or a write
};

class SimWorld;

// One simulated host. Owned by the world.
class SimHost {
 public:
  ~SimHost();
  [[nodiscard]] const std::string& address() const;
  Platform platform();  // the parts live as long as the host
  SimFiles& files();
  SimScreen& screen();          // message boxes, tray icon, program starter: recorded and scripted
  SimControl& control();        // the control socket: a test speaks as its clients
  SimDnsClient& dns();          // names of addresses by script
  SimFolderWatcher& folders();  // tells of changes by script
  SimLocalServices& local_services();  // what is found on the local network, by script

 private:
  friend class SimWorld;
  struct Parts;
  explicit SimHost(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> parts_;
};

// A bare TCP endpoint for tests: sends exactly the given bytes as one segment, keeps what comes.
class RawPeer {
 public:
  virtual ~RawPeer() = default;
  virtual void send(std::string_view data) = 0;  // one segment, one read unless conditions cut it
  virtual void close() = 0;                      // orderly
  virtual void end_sending() = 0;  // half close: nothing more is sent, what comes is still read
  virtual void reset() = 0;
  virtual void set_reading(bool reading) = 0;
  [[nodiscard]] virtual bool connected() const = 0;  // stands, as far as this end knows
  [[nodiscard]] virtual bool closed_by_peer() const = 0;
  [[nodiscard]] virtual const std::string& received() const = 0;
  [[nodiscard]] virtual const std::vector<std::string>& reads() const = 0;  // cut as they arrived
  virtual std::string take() = 0;  // received so far, and forgets it
  [[nodiscard]] virtual std::uint16_t local_port() const = 0;
};

class SimWorld {
 public:
  explicit SimWorld(std::uint64_t seed = 1);
  ~SimWorld();

  SimHost& add_host(const std::string& address);  // the same host again if there is one
  NetworkConditions& conditions();
  // A name that connects resolve to an address.
  void add_name(const std::string& name, const std::string& address);

  // Raw endpoints. The connecting one is returned at once and connects in virtual time; a
  // listening one hands every accepted peer to the callback and keeps it alive.
  std::unique_ptr<RawPeer> connect_raw(const std::string& from, const std::string& to,
                                       std::uint16_t port);
  void listen_raw(const std::string& address, std::uint16_t port,
                  std::function<void(RawPeer&)> on_peer);

  // Virtual time. run_for runs every event due in the next milliseconds, events at its very end
  // included. run_until stops at once when the condition holds and returns whether it did.
  void run_for(std::int64_t ms);
  bool run_until(const std::function<bool()>& condition, std::int64_t most_ms);
  [[nodiscard]] std::int64_t now_ms() const;
  [[nodiscard]] std::int64_t now_us() const;
  void set_local_time(LocalTime now);  // civil time of this moment; it goes on from there

  // The transcript is kept only from this call on.
  void record();
  [[nodiscard]] const std::vector<TranscriptEntry>& transcript() const;
  // The transcript as text, one event a line, bytes in hexadecimal.
  [[nodiscard]] std::string trace() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace velmora::sim
