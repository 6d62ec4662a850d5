// Every event of a message connection in every state that its slot can have, two of them in a row.
#include <functional>

#include "net/message_connections.h"
#include "net/routing_table.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

// A network that does nothing on its own: the test raises the events of its sockets at will.
class PuppetNetwork : public Network {
 public:
  class PuppetSocket : public Socket {
   public:
    explicit PuppetSocket(PuppetNetwork& network) : network_(network) { network_.newest = this; }
    ~PuppetSocket() override {
      if (network_.newest == this) network_.newest = nullptr;
    }
    PuppetSocket(const PuppetSocket&) = delete;
    PuppetSocket& operator=(const PuppetSocket&) = delete;
    void set_events(SocketEvents* receiver) override { events = receiver; }
    void write(std::string_view) override {}
    void write_alone(std::string_view) override {}
    void set_reading(bool) override {}
    [[nodiscard]] bool connected() const override { return true; }
    [[nodiscard]] std::size_t unsent() const override { return 0; }
    [[nodiscard]] std::size_t unacknowledged() const override { return 0; }
    [[nodiscard]] std::string peer_address() const override { return "24.0.0.2"; }
    [[nodiscard]] std::uint16_t peer_port() const override { return 6346; }
    [[nodiscard]] std::uint16_t local_port() const override { return 6346; }

    SocketEvents* events = nullptr;

   private:
    PuppetNetwork& network_;
  };

  std::unique_ptr<Listener> listen(std::uint16_t port, int, ListenerEvents& events) override {
    class PuppetListener : public Listener {
     public:
      void set_accepting(bool) override {}
      [[nodiscard]] std::uint16_t local_port() const override { return 0; }
    };
    if (port == 6346) listening = &events;
    return std::make_unique<PuppetListener>();
  }
  std::unique_ptr<Socket> connect(const std::string&, std::uint16_t, int,
                                  SocketEvents& events) override {
    auto socket = std::make_unique<PuppetSocket>(*this);
    socket->set_events(&events);
    return socket;
  }
  [[nodiscard]] std::string local_address() const override { return "24.0.0.1"; }

  ListenerEvents* listening = nullptr;
  PuppetSocket* newest = nullptr;
};

struct Puppets {
  Puppets() {
    Platform machine = host.platform();
    servent = std::make_unique<Servent>(
        Platform{machine.loop, network, machine.files, machine.boxes, machine.tray,
                 machine.programs, machine.control, machine.dns},
        ServentOptions{});
    servent->start();
  }
  void accept() {
    network.listening->on_accept(std::make_unique<PuppetNetwork::PuppetSocket>(network));
  }
  void dial() { servent->form().new_host.enter("24.0.0.2"); }
  void read(const std::string& bytes) {
    if (network.newest != nullptr) network.newest->events->on_read(bytes);
  }
  const ConnectionSlot* slot(std::size_t index) {
    const auto& slots = servent->parts().connections.connection_slots();
    return slots.has(index) ? &slots.at(index) : nullptr;
  }

  SimWorld world;
  SimHost& host = world.add_host("24.0.0.1");
  PuppetNetwork network;
  std::unique_ptr<Servent> servent;
};

using Step = std::pair<const char*, std::function<void(Puppets&)>>;

const std::vector<Step>& events() {
  static const std::vector<Step> steps = {
      {"accept", [](Puppets& p) { p.accept(); }},
      {"dial", [](Puppets& p) { p.dial(); }},
      {"connect",
       [](Puppets& p) {
         if (p.network.newest != nullptr) p.network.newest->events->on_connect();
       }},
      {"hello", [](Puppets& p) { p.read(std::string(kHello)); }},
      {"welcome", [](Puppets& p) { p.read(std::string(kWelcome)); }},
      {"ping", [](Puppets& p) { p.read(descriptor("p", 0, 3, 0, "")); }},
      {"many",
       [](Puppets& p) {
         std::string chunk;
         for (int i = 0; i < 200; ++i) chunk += descriptor("m" + std::to_string(i), 0, 3, 0, "");
         p.read(chunk);
       }},
      {"disconnect",
       [](Puppets& p) {
         if (p.network.newest != nullptr) p.network.newest->events->on_disconnect();
       }},
      {"time-out",
       [](Puppets& p) {
         if (p.network.newest != nullptr) p.network.newest->events->on_connect_failed();
       }},
      {"tick", [](Puppets& p) { p.world.run_for(5000); }},
      {"double click", [](Puppets& p) {
         ListView& list = p.servent->form().lHosts;
         if (list.rows() > 0) list.activate(1);
       }}};
  return steps;
}

const std::vector<Step>& states() {
  static const std::vector<Step> steps = {{"never used", [](Puppets&) {}},
                                          {"accepted", [](Puppets& p) { p.accept(); }},
                                          {"dialled", [](Puppets& p) { p.dial(); }},
                                          {"connected",
                                           [](Puppets& p) {
                                             p.accept();
                                             p.read(std::string(kHello));
                                           }},
                                          {"closing, its peer gone",
                                           [](Puppets& p) {
                                             p.accept();
                                             p.network.newest->events->on_disconnect();
                                           }},
                                          {"closing, its peer silent",
                                           [](Puppets& p) {
                                             p.accept();
                                             p.world.run_for(5000);
                                           }},
                                          {"freed", [](Puppets& p) {
                                             p.accept();
                                             p.world.run_for(10'000);
                                           }}};
  return steps;
}

TEST(EventMatrix, WhateverComesTheFreeTimerWins) {
  for (const auto& [state, prepare] : states()) {
    for (const auto& [first, raise_first] : events()) {
      for (const auto& [second, raise_second] : events()) {
        SCOPED_TRACE(std::string(state) + ", " + first + ", " + second);
        Puppets puppets;
        prepare(puppets);
        raise_first(puppets);
        const ConnectionSlot* slot = puppets.slot(1);
        const bool closing = slot != nullptr && slot->state == kClosing;
        const std::int64_t since_ms = puppets.world.now_ms();
        raise_second(puppets);
        if (closing) {  // it may be closing for a while
          puppets.world.run_for(since_ms + 5000 - puppets.world.now_ms());
          EXPECT_EQ(puppets.slot(1)->state, kFreed);
        }
        puppets.world.run_for(40'000);  // five silent ticks, and the free timer
        const ServentParts parts = puppets.servent->parts();
        for (std::size_t i = 1; i <= parts.connections.connection_slots().upper_bound(); ++i) {
          EXPECT_LT(puppets.slot(i)->state, kOpening) << "slot " << i;
          EXPECT_FALSE(parts.connections.loaded(i)) << "slot " << i;
          EXPECT_FALSE(parts.routes.names(i)) << "slot " << i;
        }
      }
    }
  }
}

}  // namespace
}  // namespace velmora::sim
