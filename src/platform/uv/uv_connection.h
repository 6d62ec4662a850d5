// One TCP connection behind a Socket, from dialling or accepting to the orderly end. It may outlive
// the Socket: what was written still leaves, the end is sent, and what the peer still sends is
// dropped until it ends too, so that no reset destroys our last bytes. The network owns it while it
// holds a descriptor.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platform/network.h"
#include "platform/uv/uv_dialer.h"
#include "platform/uv/uv_outbox.h"
#include "platform/uv/uv_watch.h"

namespace velmora::uv {

class UvNetwork;

class UvConnection : public std::enable_shared_from_this<UvConnection>, private WatchEvents {
 public:
  UvConnection(UvNetwork& network, SocketEvents* events);

  void dial(const std::string& host, std::uint16_t port, int timeout_ms);
  void fail_later(const std::string& host, std::uint16_t port);  // instead of dialling
  void stand(std::unique_ptr<UvWatch> connected);

  void set_events(SocketEvents* events);
  void set_reading(bool reading);
  void write(std::string_view data, bool alone);
  void write_run(std::string_view data, std::span<const std::uint32_t> ends);
  void close();  // orderly; no event comes any more
  void flush();  // never calls the events
  void abort();  // at once

  [[nodiscard]] bool connected() const { return phase_ == Phase::standing && !broken_; }
  [[nodiscard]] bool parting() const { return phase_ == Phase::parting; }
  [[nodiscard]] std::size_t unsent() const { return connected() ? queued() : 0; }
  [[nodiscard]] std::size_t unacknowledged() const;
  [[nodiscard]] const std::string& peer_address() const { return peer_address_; }
  [[nodiscard]] std::uint16_t peer_port() const { return peer_port_; }
  [[nodiscard]] std::uint16_t local_port() const { return local_port_; }

  void count_unsent();  // brings the network's sum up to date
  bool plan_flush() { return !std::exchange(flush_planned_, true); }  // false: it was planned
  void flush_planned();

 private:
  enum class Phase { connecting, standing, parting, over };
  // What was read and not announced yet: its last string lacks bytes that may be on the way.
  struct Settling {
    std::string bytes;
    std::size_t lacks;
    int times_left;
    std::int64_t until_ms;
    std::size_t counted;  // of the bytes, in the network's sum
    std::unique_ptr<Timer> limit;
  };

  void make_dialer();
  void dialled(std::unique_ptr<UvWatch> connected);
  void update_reading();
  void on_readable() override;
  void on_writable() override;
  ssize_t receive(std::span<char> room) const;
  void read_all_queued(std::string data);
  void lacking_came(std::string_view data);
  void arrived(std::string_view data, std::size_t lacks);
  void settle(std::string_view data, std::size_t lacks);
  void count_settling();
  std::unique_ptr<Settling> end_settling();
  void announce_settled();
  void ended(bool reset);
  void tell_disconnect();
  void write_failed();
  void end_when_read();
  [[nodiscard]] std::size_t queued() const;
  [[nodiscard]] bool fits(std::size_t bytes) const;
  void make_room(std::size_t bytes);
  void pushed(std::size_t bytes);
  void part();
  void send_end();
  void limit_parting(int ms);
  void over();

  // First what every write touches, close together: a copy for each of a thousand connections costs
  // what its memory costs.
  UvNetwork& network_;
  SocketEvents* events_;
  Phase phase_ = Phase::connecting;
  bool flush_planned_ = false;
  bool broken_ = false;  // writing failed, and that was not told yet
  bool awaits_room_ = false;
  std::size_t counted_unsent_ = 0;
  std::optional<UvOutbox> outbox_;  // while it stands

  std::unique_ptr<UvWatch> watch_;
  std::unique_ptr<Settling> settling_;
  std::unique_ptr<UvDialer> dialer_;
  std::string peer_address_;
  std::uint16_t peer_port_ = 0;
  std::uint16_t local_port_ = 0;
  bool reading_ = true;
  bool disconnect_waits_ = false;  // for events to be told to
  bool peer_ended_ = false;
  bool end_sent_ = false;
  std::unique_ptr<Timer> parting_limit_;
};

}  // namespace velmora::uv
