// The switch "Random identifiers": those of what the servent sends, and its own.
#include <gmock/gmock.h>

#include <cerrno>
#include <set>

#include "protocol/conversions.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

constexpr const char* kFile = "Velmora_identifier.txt";

ServentRig::Fields fields(bool on) {
  return {{"max_in_host", "20"}, {"random_identifiers_behaviour", on ? "on" : "off"}};
}

// The identifiers of a query and two pings, all of one second.
std::vector<std::string> identifiers(ServentRig& rig, RawPeer& peer) {
  rig.form().Tsearch.enter("abc");
  rig.form().more_cache.click();
  rig.form().more_cache.click();
  rig.world.run_for(5);
  const std::string bytes = peer.take();
  EXPECT_EQ(bytes.size(), 29U + 23 + 23);
  return {bytes.substr(0, 16), bytes.substr(29, 16), bytes.substr(52, 16)};
}

// The identifier at the end of the hit that answers a search.
std::string identifier_in_hit(ServentRig& rig, RawPeer& peer) {
  peer.send(descriptor("a search", 128, 1, 0, std::string("\0\0shared\0", 9)));
  rig.world.run_for(5);
  const std::string hit = peer.take();
  EXPECT_GT(hit.size(), 50U);
  return hit.substr(hit.size() - 16);
}

ServentRig::Prepare with_file(const std::string& content) {
  return [content](SimHost& host) {
    host.files().put("/share/shared.txt", "x");
    if (!content.empty()) host.files().put(kFile, content);
    return host.platform();
  };
}

std::string hit_of(ServentRig& rig, RawPeer& peer) {
  rig.form().upload_config.enter("/share");
  rig.form().scan_config.click();
  rig.world.run_for(100);
  return identifier_in_hit(rig, peer);
}

TEST(RandomIdentifiersSwitch, NoTwoAreEqualAndAllAreMarked) {
  std::set<std::string> seen;
  for (const std::uint64_t seed : {1U, 2U, 1U}) {
    ServentRig rig(fields(true), seed);
    const auto peer = rig.connected_peer("10.0.0.2");
    for (const std::string& guid : identifiers(rig, *peer)) {
      EXPECT_EQ(guid[8], '\xFF');
      EXPECT_EQ(guid[15], '\0');
      seen.insert(guid);
    }
    EXPECT_EQ(rig.logged("Re-Using a GUID?"), 0);
  }
  EXPECT_EQ(seen.size(), 6U) << "another seed gives others, the same seed the same";
}

TEST(RandomIdentifiersSwitch, OffTheyAreOfTheHourAndTheSecond) {
  ServentRig rig(fields(true));
  const auto peer = rig.connected_peer("10.0.0.2");
  rig.world.set_local_time({2001, 2, 3, 13, 5, 7});
  rig.turn("random_identifiers", false);
  EXPECT_THAT(identifiers(rig, *peer), testing::Each("1371234567890123"));
  EXPECT_EQ(rig.logged("Re-Using a GUID?"), 2);
}

TEST(RandomIdentifiersSwitch, TheServentsOwnIsKeptInItsProfile) {
  ServentRig first(fields(true), 1, with_file(""));
  const auto peer = first.connected_peer("10.0.0.2");
  const std::string own = hit_of(first, *peer);
  EXPECT_EQ(own[8], '\xFF');
  EXPECT_EQ(own[15], '\0');
  const std::string kept = first.host.files().content(kFile);
  EXPECT_EQ(kept, guid_text(own) + "\n");

  first.turn("random_identifiers", false);
  const std::string classic = identifier_in_hit(first, *peer);
  EXPECT_EQ(classic.find_first_not_of("0123456789"), std::string::npos);
  first.turn("random_identifiers", true);
  EXPECT_EQ(identifier_in_hit(first, *peer), own);

  ServentRig again(fields(true), 99, with_file(kept));
  EXPECT_EQ(hit_of(again, *again.connected_peer("10.0.0.2")), own);
  ServentRig other(fields(true), 99, with_file(""));
  EXPECT_NE(hit_of(other, *other.connected_peer("10.0.0.2")), own);
}

TEST(RandomIdentifiersSwitch, OffNoFileIsReadOrMade) {
  ServentRig rig(fields(false), 1, with_file(""));
  EXPECT_EQ(hit_of(rig, *rig.connected_peer("10.0.0.2")).find_first_not_of("0123456789"),
            std::string::npos);
  EXPECT_FALSE(rig.host.files().exists(kFile));
}

TEST(RandomIdentifiersSwitch, AFileWithoutAnIdentifierIsReplaced) {
  const std::string good = "00-11-22-33-44-55-66-77-FF-99-AA-BB-CC-DD-EE-00";
  for (const std::string& damaged :
       {std::string("\n"), good.substr(1), good + "-00", "0" + good.substr(0, 46),
        std::string(good).replace(2, 1, "+"), std::string(good).replace(3, 1, "-"),
        std::string(good).replace(46, 1, "G")}) {
    SCOPED_TRACE(damaged);
    ServentRig rig(fields(true), 1, with_file(damaged));
    const std::string own = hit_of(rig, *rig.connected_peer("10.0.0.2"));
    EXPECT_EQ(rig.host.files().content(kFile), guid_text(own) + "\n");
  }
  ServentRig rig(fields(true), 1, with_file(good));
  EXPECT_EQ(guid_text(hit_of(rig, *rig.connected_peer("10.0.0.2"))), good);
  EXPECT_EQ(rig.host.files().content(kFile), good);
}

TEST(RandomIdentifiersSwitch, AFileThatCannotBeReadIsLeftAlone) {
  ServentRig rig(fields(false), 1, with_file("anything"));
  rig.host.files().fail_next(1, EACCES);
  rig.turn("random_identifiers", true);
  EXPECT_EQ(rig.logged("servent_identifier: Permission denied"), 1);
  EXPECT_EQ(rig.host.files().content(kFile), "anything");
  const auto peer = rig.connected_peer("10.0.0.2");
  EXPECT_EQ(hit_of(rig, *peer).find_first_not_of("0123456789"), std::string::npos);
}

TEST(RandomIdentifiersSwitch, OneThatCannotBeSavedIsUsedWhileTheProgramRuns) {
  ServentRig rig(fields(false), 1, with_file(""));
  const auto peer = rig.connected_peer("10.0.0.2");
  hit_of(rig, *peer);
  rig.host.files().set_capacity(0);
  rig.turn("random_identifiers", true);
  EXPECT_EQ(rig.logged("servent_identifier: No space left on device"), 1);
  const std::string own = identifier_in_hit(rig, *peer);
  EXPECT_EQ(own[8], '\xFF');
  EXPECT_EQ(identifier_in_hit(rig, *peer), own);
}

}  // namespace
}  // namespace velmora::sim
