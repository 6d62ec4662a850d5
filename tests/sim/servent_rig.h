// A servent on a simulated host with bare peers around it: what most virtual-time tests start from.
// The servent is driven and read through its form, as a person would.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/servent.h"
#include "platform/sim/sim_world.h"
#include "support/wire.h"

namespace velmora::sim {

inline constexpr std::string_view kHello = "GNUTELLA CONNECT/0.4\n\n";
inline constexpr std::string_view kWelcome = "GNUTELLA OK\n\n";

class ServentRig {
 public:
  using Fields = std::vector<std::pair<std::string, std::string>>;

  // Made by what `prepare` gives back, when there is one: it may put files on the host's disk first
  // and put other parts in the place of simulated ones.
  using Prepare = std::function<Platform(SimHost&)>;

  explicit ServentRig(const Fields& fields = {}, std::uint64_t seed = 1,
                      const Prepare& prepare = {})
      : world(seed), host(world.add_host("10.0.0.1")) {
    world.add_host("10.0.0.2");
    world.add_host("10.0.0.3");
    world.add_host("10.0.0.4");
    ServentOptions options;
    options.set = fields;
    options.echo_log = [this](const std::string& line) { log.push_back(line); };
    servent =
        std::make_unique<Servent>(prepare ? prepare(host) : host.platform(), std::move(options));
    started = servent->start();
  }

  Form& form() { return servent->form(); }

  // A peer that has shaken hands with the servent on its message port.
  std::unique_ptr<RawPeer> connected_peer(const std::string& address) {
    auto peer = world.connect_raw(address, "10.0.0.1", 6346);
    EXPECT_TRUE(world.run_until([&] { return peer->connected(); }, 1000));
    peer->send(kHello);
    EXPECT_TRUE(world.run_until([&] { return peer->received() == kWelcome; }, 1000));
    peer->take();
    return peer;
  }

  // What a list's cell shows; rows and columns count from 1.
  static std::string cell(const ListView& list, std::size_t row, std::size_t column) {
    return list.cell(row, column);
  }
  std::string host_status(std::size_t row) { return form().lHosts.cell(row, 4); }
  std::string host_counts(std::size_t row) { return form().lHosts.cell(row, 3); }

  // A counter's label, brought up to date first.
  std::string counter(Label& label) {
    world.run_for(500);
    return label.text();
  }
  int logged(std::string_view part) const {
    int count = 0;
    for (const std::string& line : log) count += line.find(part) != std::string::npos ? 1 : 0;
    return count;
  }
  // Ticks or clears the box of a switch, named without its ending "_behaviour".
  void turn(const std::string& behaviour, bool on) {
    for (BehaviourBox& box : form().behaviour_boxes) {
      if (box.name() == behaviour + "_behaviour") box.set_checked(on);
    }
  }
  const std::string& status_bar() { return form().StatusBar.panel(1); }

  SimWorld world;
  SimHost& host;
  std::vector<std::string> log;
  std::unique_ptr<Servent> servent;
  Servent::Started started = Servent::Started::yes;
};

}  // namespace velmora::sim
