// The switch "Whole messages": descriptors that arrive in pieces.
#include <gmock/gmock.h>

#include "servent_rig.h"

namespace velmora::sim {
namespace {

const std::string kQueryPayload("\0\0abc\0", 6);

ServentRig::Fields fields(bool on) {
  return {{"max_in_host", "20"}, {"whole_descriptors_behaviour", on ? "on" : "off"}};
}

std::string query(const std::string& guid) { return descriptor(guid, 128, 5, 0, kQueryPayload); }
std::string relayed(const std::string& guid) { return descriptor(guid, 128, 4, 1, kQueryPayload); }

struct Neighbours {
  explicit Neighbours(ServentRig& owner)
      : rig(owner), from(rig.connected_peer("10.0.0.2")), to(rig.connected_peer("10.0.0.3")) {}
  // What the other neighbour gets of these reads.
  std::string pass(const std::vector<std::string>& reads) {
    for (const std::string& read : reads) {
      from->send(read);
      rig.world.run_for(5);
    }
    return to->take();
  }
  ServentRig& rig;
  std::unique_ptr<RawPeer> from, to;
};

TEST(WholeDescriptorsSwitch, ADescriptorCutAnywhereIsRelayedWhole) {
  ServentRig rig(fields(true));
  Neighbours peers(rig);
  const std::string both = query("one") + query("two");
  for (std::size_t cut = 1; cut < both.size(); ++cut) {
    SCOPED_TRACE(cut);
    EXPECT_EQ(peers.pass({both.substr(0, cut), both.substr(cut)}), relayed("one") + relayed("two"));
  }
  EXPECT_EQ(rig.host_counts(1), "0/114/0");
  EXPECT_EQ(rig.logged("dropping"), 0);

  rig.world.conditions().trickle_probability = 1;
  EXPECT_EQ(peers.pass({both}), relayed("one") + relayed("two"));
}

TEST(WholeDescriptorsSwitch, OffACutOneLeavesShortAndItsRestIsLost) {
  ServentRig rig(fields(false));
  Neighbours peers(rig);
  const std::string one = query("one");
  EXPECT_EQ(peers.pass({one.substr(0, 27), one.substr(27)}), relayed("one").substr(0, 27));
  EXPECT_EQ(peers.pass({one.substr(0, 20), one.substr(20)}), "");
  EXPECT_EQ(rig.logged("Format_in_data: data < 23 bytes, dropping"), 3);
}

TEST(WholeDescriptorsSwitch, ABadLengthDropsWhatIsThereAndTheStreamStaysInStep) {
  const std::string large = descriptor("large", 129, 5, 0, std::string(40'000, 'x'));
  std::string absurd = descriptor("absurd", 129, 5, 0, "");
  absurd.replace(19, 4, "\xFF\xFF\xFF\x7F");
  struct Case {
    std::vector<std::string> reads;
    int dropped;
    std::vector<std::string> relayed;
  };
  const std::string a = query("a");
  const std::string b = query("b");
  const Case cases[] = {
      {{a + large.substr(0, 20'000), large.substr(20'000) + b}, 20'000, {"a", "b"}},
      {{a.substr(0, 5), a.substr(5) + large + b}, 40'023, {"a", "b"}},
      {{large.substr(0, 10), large.substr(10, 20), large.substr(30) + b.substr(0, 9), b.substr(9)},
       30,
       {"b"}},
      {{a + absurd + b, b.substr(0, 3), b.substr(3)}, 52, {"a", "b"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.dropped);
    ServentRig rig(fields(true));
    Neighbours peers(rig);
    std::string expected;
    for (const std::string& guid : c.relayed) expected += relayed(guid);
    EXPECT_EQ(peers.pass(c.reads), expected);
    EXPECT_EQ(rig.logged("Format_in_data: "), 1);
    EXPECT_EQ(rig.logged("Format_in_data: Bad header length, Drop " + std::to_string(c.dropped) +
                         " Bytes!"),
              1);
  }
}

TEST(WholeDescriptorsSwitch, WithinADescriptorNoChunkIsAHandshake) {
  for (const std::string& text : {std::string(kHello), std::string("GET /get/1/x HTTP/1.0\r\n")}) {
    const std::string payload = std::string("\0\0", 2) + text + '\0';
    const std::string whole = descriptor("q", 128, 5, 0, payload);
    const std::vector<std::string> reads = {whole.substr(0, 25), text,
                                            whole.substr(whole.size() - 1)};
    ServentRig on(fields(true));
    Neighbours peers(on);
    EXPECT_EQ(peers.pass(reads), descriptor("q", 128, 4, 1, payload));
    EXPECT_EQ(peers.from->take(), "");
    EXPECT_EQ(on.logged("Request a file of mine"), 0);

    ServentRig off(fields(false));
    Neighbours classic(off);
    EXPECT_EQ(classic.pass(reads), descriptor("q", 128, 4, 1, payload).substr(0, 25));
    EXPECT_EQ(classic.from->take(), text == kHello ? kWelcome : "");
    EXPECT_EQ(off.logged("Request a file of mine"), text == kHello ? 0 : 1);
  }
}

TEST(WholeDescriptorsSwitch, TurnedOffItForgetsWhatWaits) {
  ServentRig rig(fields(true));
  Neighbours peers(rig);
  const std::string one = query("one");
  EXPECT_EQ(peers.pass({one.substr(0, 10)}), "");
  for (const bool on : {false, true}) rig.turn("whole_descriptors", on);
  EXPECT_EQ(peers.pass({query("two")}), relayed("two"));
  // And what is too late is no rest.
  EXPECT_EQ(peers.pass({one.substr(0, 10)}), "");
  rig.world.run_for(10'000);
  EXPECT_EQ(peers.pass({query("three")}), relayed("three"));
}

}  // namespace
}  // namespace velmora::sim
