// The switch "Local network": servents on the same network find each other.
#include <gtest/gtest.h>

#include "net/message_connections.h"
#include "platform/sim/sim_local_services.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

const ServentRig::Fields kOn = {{"local_network_behaviour", "on"}};

std::string pong_from(const std::string& address_bytes) {
  return descriptor("a", 1, 3, 0,
                    std::string("\xca\x18", 2) + address_bytes + std::string(8, '\0'));
}

bool in_cache(ServentRig& rig, const std::string& address) {
  rig.world.run_for(1000);
  for (std::size_t row = 1; row <= rig.form().lcache.rows(); ++row) {
    for (std::size_t column = 1; column <= rig.form().lcache.columns().size(); ++column) {
      if (rig.form().lcache.cell(row, column).starts_with(address)) return true;
    }
  }
  return false;
}

TEST(LocalNetworkSwitch, AnnouncesTheMessagePortWhileItIsOn) {
  ServentRig rig;
  const SimLocalServices& local = rig.host.local_services();
  EXPECT_EQ(local.port(), 0);
  rig.turn("local_network", true);
  EXPECT_EQ(local.port(), 6346);
  EXPECT_EQ(local.name(), "Velmora 10.0.0.1:6346");
  rig.form().port_config.enter("7000");
  rig.world.run_for(5000);
  EXPECT_EQ(local.port(), 7000);
  rig.turn("local_network", false);
  EXPECT_EQ(local.port(), 0);
  rig.turn("local_network", true);
  rig.servent->shutdown();
  EXPECT_EQ(local.port(), 0);
}

TEST(LocalNetworkSwitch, PutsWhatItFindsIntoTheCacheAndConnects) {
  ServentRig rig(kOn);
  SimLocalServices& local = rig.host.local_services();
  local.find({"10.0.0.1", 6346});
  EXPECT_FALSE(in_cache(rig, "10.0.0.1")) << "that is this servent itself";
  for (const char* address : {"10.0.0.2", "10.0.0.2", "10.0.0.3", "10.0.0.4"}) {
    local.find({address, 6346});
  }
  ASSERT_EQ(rig.servent->parts().connections.connection_slots().upper_bound(), 2U)
      << "no more than max_out_host, none twice";
  EXPECT_EQ(rig.servent->parts().connections.connection_slots().at(2).address, "10.0.0.3");
  EXPECT_TRUE(in_cache(rig, "10.0.0.4"));
}

TEST(LocalNetworkSwitch, OfTwoThatFindEachOtherOneConnects) {
  SimWorld world;
  SimHost& first = world.add_host("10.0.0.1");
  SimHost& second = world.add_host("10.0.0.2");
  ServentOptions options;
  options.set = kOn;
  Servent a(first.platform(), options);
  Servent b(second.platform(), options);
  a.start();
  b.start();
  second.local_services().find({"10.0.0.1", 6346});
  first.local_services().find({"10.0.0.2", 6346});
  world.run_for(20'000);
  EXPECT_EQ(a.parts().connections.connected_ones().size(), 1U);
  EXPECT_EQ(b.parts().connections.connected_ones().size(), 1U);

  // One that cannot begin is found all the same.
  SimHost& third = world.add_host("10.0.0.3");
  Servent c(third.platform(), options);
  c.start();
  third.local_services().find({"10.0.0.2", 6346});
  world.run_for(4000);
  EXPECT_EQ(c.parts().connections.connected_ones().size(), 0U);
  world.run_for(2000);
  EXPECT_EQ(c.parts().connections.connected_ones().size(), 1U);
  for (Servent* servent : {&a, &b, &c}) servent->shutdown();
}

TEST(LocalNetworkSwitch, LetsPrivateAddressesIntoTheCacheButNoOthersOfTheFilter) {
  for (const bool on : {false, true}) {
    ServentRig rig(on ? kOn : ServentRig::Fields{});
    rig.form().cachefilter_config.enter("192.168.7.");
    auto peer = rig.connected_peer("10.0.0.2");
    peer->send(pong_from("\xc0\xa8\x01\x05"));
    peer->send(pong_from("\xc0\xa8\x07\x05"));
    EXPECT_EQ(in_cache(rig, "192.168.1.5"), on);
    EXPECT_FALSE(in_cache(rig, "192.168.7.5"));
  }
}

}  // namespace
}  // namespace velmora::sim
