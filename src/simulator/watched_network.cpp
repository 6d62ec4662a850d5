#include "simulator/watched_network.h"

#include <cerrno>
#include <deque>
#include <utility>

#include "platform/error.h"

namespace velmora::simulator {
namespace {

constexpr int kAcceptWaits_ms = 500;

class WatchedSocket : public Socket, private SocketEvents {
 public:
  WatchedSocket(Seam& seam, SocketEvents* events)
      : seam_(seam), number_(++seam.last_socket), events_(events) {
    ++seam_.held.sockets;
  }
  ~WatchedSocket() override {
    const InMachine side;
    socket_.reset();
    if (!seam_.strikes(Plant::leak)) --seam_.held.sockets;
    seam_.watch.on_closed(number_);
  }
  WatchedSocket(const WatchedSocket&) = delete;
  WatchedSocket& operator=(const WatchedSocket&) = delete;

  void hold(std::unique_ptr<Socket> socket) { socket_ = std::move(socket); }
  SocketEvents& receiver() { return *this; }

  void set_events(SocketEvents* events) override {
    const InMachine side;
    events_ = events;
    socket_->set_events(events == nullptr ? nullptr : this);
  }
  void write(std::string_view data) override { write(data, false); }
  void write_alone(std::string_view data) override { write(data, true); }
  void set_reading(bool reading) override {
    const InMachine side;
    socket_->set_reading(reading);
  }
  [[nodiscard]] bool connected() const override { return socket_->connected(); }
  [[nodiscard]] std::size_t unsent() const override { return socket_->unsent(); }
  [[nodiscard]] std::size_t unacknowledged() const override { return socket_->unacknowledged(); }
  [[nodiscard]] std::string peer_address() const override { return socket_->peer_address(); }
  [[nodiscard]] std::uint16_t peer_port() const override { return socket_->peer_port(); }
  [[nodiscard]] std::uint16_t local_port() const override { return socket_->local_port(); }

 private:
  void write(std::string_view data, bool alone) {
    machine_needs_memory();
    const InMachine side;
    if (seam_.chance.happens(seam_.faults.write)) throw PlatformError(Errc::no_buffer_space);
    std::string bytes(data);
    if (seam_.strikes(Plant::forward)) bytes.back() ^= 1;
    if (alone) {
      socket_->write_alone(bytes);
    } else {
      socket_->write(bytes);
    }
    seam_.watch.on_write(number_, bytes);
  }
  void on_connect() override {
    seam_.enter([&] { events_->on_connect(); });
  }
  void on_connect_failed() override {
    seam_.enter([&] { events_->on_connect_failed(); });
  }
  void on_read(std::string_view data) override {
    {
      const InMachine side;
      seam_.watch.on_read(number_, data);
    }
    seam_.enter([&] { events_->on_read(data); });
  }
  void on_disconnect() override {
    seam_.enter([&] { events_->on_disconnect(); });
  }

  Seam& seam_;
  std::uint64_t number_;
  SocketEvents* events_;
  std::unique_ptr<Socket> socket_;
};

class WatchedListener : public Listener, private ListenerEvents {
 public:
  WatchedListener(Seam& seam, ListenerEvents& events)
      : seam_(seam),
        events_(events),
        later_(seam.machine.loop.make_timer(kAcceptWaits_ms, [this] { hand_over_waiting(); })) {
    ++seam_.held.listeners;
  }
  ~WatchedListener() override {
    const InMachine side;
    listener_.reset();
    waiting_.clear();
    later_.reset();
    --seam_.held.listeners;
  }
  WatchedListener(const WatchedListener&) = delete;
  WatchedListener& operator=(const WatchedListener&) = delete;

  void listen(std::uint16_t port, int backlog) {
    listener_ = seam_.machine.network.listen(port, backlog, *this);
  }
  void set_accepting(bool accepting) override {
    const InMachine side;
    listener_->set_accepting(accepting);
    accepting_ = accepting;
  }
  [[nodiscard]] std::uint16_t local_port() const override { return listener_->local_port(); }

 private:
  void on_accept(std::unique_ptr<Socket> pending) override {
    const InMachine side;
    if (seam_.chance.happens(seam_.faults.abort)) return;
    if (seam_.chance.happens(seam_.faults.accept)) {
      waiting_.push_back(std::move(pending));
      later_->set_enabled(true);
      return;
    }
    hand_over(std::move(pending));
  }
  void hand_over(std::unique_ptr<Socket> pending) {
    auto watched = std::make_unique<WatchedSocket>(seam_, nullptr);
    watched->hold(std::move(pending));
    ListenerEvents& events = events_;
    seam_.enter([&] { events.on_accept(std::move(watched)); });
  }
  // One a tick, as an acceptor gets on once there are descriptors again.
  void hand_over_waiting() {
    later_->set_enabled(false);
    if (waiting_.empty()) return;
    later_->set_enabled(waiting_.size() > 1 || !accepting_);
    if (!accepting_) return;
    auto pending = std::move(waiting_.front());
    waiting_.pop_front();
    hand_over(std::move(pending));  // may destroy the listener
  }

  Seam& seam_;
  ListenerEvents& events_;
  bool accepting_ = true;
  std::deque<std::unique_ptr<Socket>> waiting_;
  std::unique_ptr<Timer> later_;
  std::unique_ptr<Listener> listener_;
};

}  // namespace

std::unique_ptr<Listener> WatchedNetwork::listen(std::uint16_t port, int backlog,
                                                 ListenerEvents& events) {
  machine_needs_memory();
  const InMachine side;
  auto listener = std::make_unique<WatchedListener>(seam_, events);
  listener->listen(port, backlog);
  return listener;
}

std::unique_ptr<Socket> WatchedNetwork::connect(const std::string& host, std::uint16_t port,
                                                int timeout_ms, SocketEvents& events) {
  machine_needs_memory();
  const InMachine side;
  if (seam_.chance.happens(seam_.faults.connect)) {
    throw PlatformError::from_errno(seam_.chance.below(2) == 0 ? EMFILE : ENOBUFS);
  }
  auto socket = std::make_unique<WatchedSocket>(seam_, &events);
  socket->hold(seam_.machine.network.connect(host, port, timeout_ms, socket->receiver()));
  return socket;
}

}  // namespace velmora::simulator
