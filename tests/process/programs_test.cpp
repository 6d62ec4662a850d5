// The real programs on loopback: what only they can show.
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>

#include "process/program.h"

namespace velmora::process {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST(Velmorad, EndsInOrderOnEverySignal) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    TemporaryFolder profile;
    auto program = servent(profile, "127.0.0.11");
    EXPECT_EQ(ask(profile, {"set", "max_down", std::to_string(number)}).status, 0);
    program->signal(number);
    EXPECT_EQ(program->wait(), 0);
    EXPECT_THAT(content(profile.path() + "/settings.toml"),
                HasSubstr("maxdown = \"" + std::to_string(number) + "\""));
    EXPECT_FALSE(std::filesystem::exists(profile.path() + "/control.sock"));
  }
}

TEST(Velmorad, RunsOnceOnAProfileAndAgainAfterACrash) {
  TemporaryFolder profile;
  auto first = servent(profile, "127.0.0.11");
  const Outcome second = run({"velmorad", "--profile", profile.path(), "--listen", "127.0.0.12"});
  EXPECT_NE(second.status, 0);
  EXPECT_THAT(second.errors, HasSubstr("VelMora Program is Already Running"));
  EXPECT_THAT(ask(profile, {"status"}).output, HasSubstr("(no window)"));
  first->signal(SIGKILL);
  first->wait();
  auto third = servent(profile, "127.0.0.11");
  EXPECT_EQ(ask(profile, {"status"}).status, 0);
}

TEST(Velmorad, TellsWhatIsWrongWithItsOptions) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> table = {
      {{"--set", "prot_config=7000"}, "did you mean \"port_config\"?"},
      {{"--set", "port_config"}, "CONTROL=VALUE"},
      {{"--listen", "here"}, "here"},
  };
  for (const auto& [options, part] : table) {
    TemporaryFolder profile;
    std::vector<std::string> arguments = {"velmorad", "--profile", profile.path()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = run(arguments);
    EXPECT_NE(outcome.status, 0) << part;
    EXPECT_THAT(outcome.errors, HasSubstr(part));
  }
}

TEST(VelmoraCli, SaysWhenNoServentRuns) {
  TemporaryFolder profile;
  const Outcome answer = ask(profile, {"status"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.output, "");
  EXPECT_THAT(answer.errors, HasSubstr(profile.path()));
}

// The engine needs no screen, so the daemon must not load one.
TEST(Velmorad, LinksNoScreenLibrary) {
  const std::string libraries = run({"/usr/bin/ldd", VELMORA_BIN "/velmorad"}).output;
  EXPECT_THAT(libraries, HasSubstr("libuv"));
  EXPECT_THAT(libraries, Not(HasSubstr("Qt")));
}

// The whole job: share, connect, search, download; the names that strangers may ask for.
TEST(Programs, FindOfferAndFetchAFile) {
  TemporaryFolder alice_profile, bob_profile, music, downloads;
  std::string song = "\xFF\xFB\x90";
  for (unsigned i = 0; i < 700'000; ++i) song += static_cast<char>(i * i % 251);
  std::ofstream(music.path() + "/a song.mp3", std::ios::binary) << song;
  auto alice = servent(alice_profile, "127.0.0.11",
                       {"--set", "pack_upload=1048576", "--set", "speed_upload=0"});
  auto bob = servent(bob_profile, "127.0.0.12", {"--set", "down_config=" + downloads.path()});
  EXPECT_EQ(ask(alice_profile, {"share", music.path()}).status, 0);
  EXPECT_EQ(ask(bob_profile, {"connect", "127.0.0.11"}).status, 0);
  const Outcome found = ask(bob_profile, {"search", "song", "44100"});
  EXPECT_EQ(found.status, 0) << found.errors;
  EXPECT_THAT(found.output, HasSubstr("44,100"));
  EXPECT_THAT(found.output, HasSubstr("128,000"));
  const Outcome fetched = ask(bob_profile, {"download", "1"});
  EXPECT_EQ(fetched.status, 0) << fetched.errors;
  EXPECT_THAT(fetched.output, EndsWith("a song.mp3: Done\n"));
  EXPECT_EQ(content(downloads.path() + "/a song.mp3"), song);
  EXPECT_EQ(ask(bob_profile, {"behaviour", "overlay"}).output, "Profile: Overlay\n");
  EXPECT_EQ(ask(bob_profile, {"behaviour", "relay", "off"}).output, "Profile: Own choice\n");
  EXPECT_EQ(ask(bob_profile, {"quit"}).status, 0);
  EXPECT_EQ(bob->wait(), 0);
}

// The first source of the file is gone, and nobody is at home at its address.
TEST(Programs, ADownloadIsFollowedToItsNextSource) {
  TemporaryFolder music, downloads;
  const std::string song(5'000, 'x');
  std::ofstream(music.path() + "/song.bin", std::ios::binary) << song;
  Resident stays("127.0.0.12");
  auto leaves = std::make_unique<Resident>("127.0.0.11");
  Resident bob("127.0.0.13", {"--set", "down_config=" + downloads.path()});
  for (const Resident* sharer : {leaves.get(), &stays}) {
    EXPECT_EQ(sharer->ask({"share", music.path()}).status, 0);
  }
  EXPECT_EQ(bob.ask({"connect", "127.0.0.11"}).status, 0);
  EXPECT_EQ(bob.ask({"search", "song"}).status, 0);
  EXPECT_EQ(bob.ask({"connect", "127.0.0.12"}).status, 0);
  EXPECT_EQ(bob.ask({"search", "song"}).status, 0);
  EXPECT_EQ(bob.ask({"behaviour", "whole_files", "on"}).status, 0);
  leaves.reset();
  const Outcome fetched = bob.ask({"download", "1"});
  EXPECT_EQ(fetched.status, 0) << fetched.output << fetched.errors;
  EXPECT_TRUE(content(downloads.path() + "/song.bin") == song);
}

}  // namespace
}  // namespace velmora::process
