#include "share/upload_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "late_machine.h"
#include "share_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::size_t kSize = 10000;

class Names : public ClientNames {
 public:
  std::string name_of(const std::string& address) override {
    return address == "10.0.0.2" ? "client.example" : "?";
  }
};

std::string request(const std::string& number, const std::string& name,
                    const std::string& lines = {}) {
  return "GET /get/" + number + "/" + name + " HTTP:/1.0\r\n" + lines + "\r\n";
}

std::string header(std::size_t size) {
  return "HTTP 200 OK\r\nServer: Velmora\r\nContent-type:application/binary\r\nContent-length: " +
         std::to_string(size) + "\r\n\r\n";
}

struct UploadServerTest : testing::Test, ShareRig {
  UploadServerTest() {
    world.add_host("10.0.0.2");
    content.resize(kSize);
    std::iota(content.begin(), content.end(), '\0');
    host.files().put("/d/a.bin", content);
    host.files().put("/d/empty", "");
    share({file("a.bin"), file("b.mp3\00144100\001128000"), file("empty"), file("gone")});
    host.files().put("/d/b.mp3", std::string(8192, 'b'));
    server.listen(6345);
  }

  static SharedFile file(const std::string& name) {
    SharedFile shared;
    shared.name = name;
    shared.path = "/d";
    return shared;
  }

  std::unique_ptr<RawPeer> connect() {
    auto peer = world.connect_raw("10.0.0.2", "10.0.0.1", 6345);
    EXPECT_TRUE(world.run_until([&] { return peer->connected(); }, 1000));
    return peer;
  }
  std::unique_ptr<RawPeer> ask(const std::string& text) {
    auto peer = connect();
    peer->send(text);
    world.run_for(2);
    return peer;
  }
  std::string status(std::size_t row) { return form.lupload.cell(row, 3); }
  std::string sent_to(const RawPeer& peer) {
    return peer.received().substr(std::min(header(kSize).size(), peer.received().size()));
  }

  // When the server wrote something, in ms from its first write on.
  std::vector<std::int64_t> write_times() {
    std::vector<std::int64_t> times;
    std::int64_t first = 0;
    for (const TranscriptEntry& entry : world.transcript()) {
      if (entry.kind != "write" || entry.host != "10.0.0.1") continue;
      if (times.empty()) first = entry.time_us;
      times.push_back((entry.time_us - first) / 1000);
    }
    return times;
  }

  std::string content;
  Names names;
  UploadServer server{host.platform(), form, index, names, *this};
};

struct Refusal {
  std::string number;
  std::string name;
  std::string reply;
};

TEST_F(UploadServerTest, SaysWhyARequestIsNotServed) {
  const std::string no_longer = "No longer points to the file: ";
  const Refusal refusals[] = {
      {"0", "a.bin", "That filenum (0) is No longer valid!"},
      {"5", "a.bin", "That filenum (5) is No longer valid!"},
      {"-1", "a.bin", "That filenum (-1) is No longer valid!"},
      {"1.5", "a.bin", "That filenum (2) is No longer valid!"},
      {"1e9", "a.bin", "That filenum (1000000000) is No longer valid!"},
      {"x", "a.bin", "That filenum (0) is No longer valid!"},
      {"1", "A.BIN", "That filenum (1) " + no_longer + "A.BIN"},
      {"2", "b", "That filenum (2) " + no_longer + "b"},
      {"3", "empty", "This file: empty no longer exists"},
      {"4", "gone.", "This file: gone no longer exists"},
  };
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.number + refusal.name);
    auto peer = ask(request(refusal.number, refusal.name));
    EXPECT_EQ(peer->received(), refusal.reply);
    EXPECT_TRUE(peer->closed_by_peer());
    EXPECT_EQ(status(1), "Error, sent msg");
  }
  for (const char* text : {"GET / HTTP/1.0\r\n\r\n", "GET \r\n\r\n"}) {
    EXPECT_EQ(ask(text)->received(), "That filenum (0) is No longer valid!");
  }
  EXPECT_EQ(form.lupload.rows(), 1U);
  EXPECT_TRUE(log.empty());
}

TEST_F(UploadServerTest, SendsAPacketOnEveryTickAndThenIsDone) {
  form.log_upload.set_checked(true);
  world.set_local_time({2026, 3, 4, 5, 6, 7});
  world.record();
  auto peer = ask(request("1", "a.bin", "User-Agent: Some\r\n"));
  ASSERT_EQ(peer->reads().size(), 1U);
  EXPECT_EQ(peer->received(), header(kSize));
  EXPECT_EQ(status(1), "Uploading 0%");
  world.run_for(250);
  server.refresh();
  world.run_for(250);
  EXPECT_EQ(status(1), "Uploading 40%");
  const auto progress = form.lupload.progress(1).value();
  EXPECT_EQ(progress.done, 4096);
  EXPECT_EQ(progress.total, 10'000);
  EXPECT_TRUE(progress.running);
  EXPECT_EQ(form.lupload.cell(1, 1), "a.bin");
  EXPECT_EQ(form.lupload.cell(1, 2), "10,000");
  EXPECT_EQ(form.lupload.cell(1, 4), "10.0.0.2");
  form.show_dns.set_checked(true);
  EXPECT_EQ(form.lupload.cell(1, 4), "client.example");
  EXPECT_EQ(form.lupload.cell_tooltip(1, 1), "a.bin");
  EXPECT_EQ(form.lupload.cell_tooltip(1, 2), "");
  EXPECT_EQ(form.lupload.cell_tooltip(1, 4), "client.example   10.0.0.2");
  peer->send(request("2", "b.mp3"));  // what comes now is not read, another request neither
  peer->send(std::string(3 * kMaxUploadRequest, 'x'));
  world.run_for(1000);
  EXPECT_FALSE(peer->closed_by_peer());
  world.run_for(500);
  EXPECT_TRUE(peer->closed_by_peer());
  EXPECT_EQ(status(1), "Done");
  EXPECT_FALSE(form.lupload.progress(1)->running);
  EXPECT_EQ(sent_to(*peer), content);
  EXPECT_THAT(write_times(), ElementsAre(0, 500, 1000, 1500));
  EXPECT_EQ(peer->reads().at(1).size(), 4096U);
  EXPECT_EQ(peer->reads().at(3).size(), kSize - 8192);
  EXPECT_EQ(index.shared_files().at(1).uploads, 1);
  EXPECT_EQ(host.files().content("VelMora_uploads.log"),
            "2026-03-04 05:06:07 a.bin IP:client.example 10.0.0.2 Stat:Uploading\n"
            "2026-03-04 05:06:09 a.bin IP:client.example 10.0.0.2 Stat:Done\n");
  EXPECT_TRUE(log.empty());
}

struct Resumption {
  std::string start;
  std::size_t sent_from;
};

TEST_F(UploadServerTest, ResumesAtTheByteAskedFor) {
  const Resumption cases[] = {
      {"100", 100}, {"9999", 9999}, {"10000", kSize}, {"10001", kSize}, {"99999999999", kSize}};
  for (const Resumption& c : cases) {
    SCOPED_TRACE(c.start);
    auto peer = ask(request("1", "a.bin", "Range: bytes=" + c.start + "-10000\r\n"));
    EXPECT_EQ(peer->received(), header(kSize));
    EXPECT_THAT(status(1), HasSubstr("Resuming an upload"));
    world.run_for(3000);
    EXPECT_EQ(sent_to(*peer), content.substr(c.sent_from));
    EXPECT_EQ(status(1), "Done");
  }
}

TEST_F(UploadServerTest, LetsOneUploadMoreThanTheLimitRun) {
  form.max_in_upload.set_text("1");
  form.log_upload.set_checked(true);
  std::vector<std::unique_ptr<RawPeer>> peers;
  for (int i = 0; i < 3; ++i) {
    peers.push_back(ask(request("1", "a.bin")));
    server.refresh();
  }
  EXPECT_EQ(server.active_uploads(), 2);
  EXPECT_EQ(peers[1]->received(), header(kSize));
  EXPECT_EQ(peers[2]->received(), "");
  EXPECT_TRUE(peers[2]->closed_by_peer());
  EXPECT_EQ(status(3), "Max, Refused");
  EXPECT_THAT(host.files().content("VelMora_uploads.log"), HasSubstr("Stat:Max, Refused\n"));
  world.run_for(3000);
  server.refresh();
  EXPECT_EQ(server.active_uploads(), 0);
  EXPECT_EQ(ask(request("1", "a.bin"))->received(), header(kSize));
  EXPECT_EQ(form.lupload.rows(), 3U);  // the first slot is used again
}

TEST_F(UploadServerTest, WaitsForTheWholeRequest) {
  auto pieces = connect();
  for (const char* piece : {"GE", "T /get/1/a.bin HT", "TP/1.0\r", "\nRange: bytes=9"}) {
    pieces->send(piece);
    world.run_for(499);
  }
  EXPECT_EQ(pieces->received(), "");
  pieces->send("990-\r\n\r\n");
  world.run_for(2);
  EXPECT_EQ(pieces->received(), header(kSize));
  world.run_for(500);
  EXPECT_EQ(sent_to(*pieces), content.substr(9990));

  auto no_end = connect();
  no_end->send("GET /get/1/a.bin HTTP/1.0\r\n");
  world.run_for(1 + 499);
  EXPECT_EQ(no_end->received(), "");
  world.run_for(2);
  EXPECT_EQ(no_end->received(), header(kSize));
}

TEST_F(UploadServerTest, ClosesConnectionsThatNeverAskProperly) {
  auto long_winded = connect();
  long_winded->send("GET /get/1/" + std::string(kMaxUploadRequest, 'x'));
  world.run_for(2);
  EXPECT_TRUE(long_winded->closed_by_peer());
  EXPECT_EQ(status(1), "Not accepted");

  std::vector<std::unique_ptr<RawPeer>> peers;
  for (const char* text : {"", "GET /get/1/a.bin HTTP/1.0", "HELLO\r\n\r\n"}) {
    peers.push_back(connect());
    if (*text != '\0') peers.back()->send(text);
  }
  world.run_for(29900);
  for (const auto& peer : peers) EXPECT_FALSE(peer->closed_by_peer());
  world.run_for(200);
  for (std::size_t i = 0; i < peers.size(); ++i) {
    EXPECT_TRUE(peers[i]->closed_by_peer());
    EXPECT_EQ(peers[i]->received(), "");
    EXPECT_EQ(status(i + 1), "No response");
  }
}

TEST_F(UploadServerTest, NoticesThatTheClientIsGone) {
  auto early = connect();
  early->close();
  world.run_for(10);
  EXPECT_EQ(status(1), "Disconnected");

  form.log_upload.set_checked(true);
  auto peer = ask(request("1", "a.bin"));
  world.run_for(500);
  peer->reset();
  world.run_for(10);
  EXPECT_THAT(status(1), HasSubstr("Disconnected"));
  world.run_for(500);
  EXPECT_EQ(status(1), "Client not recieving");
  EXPECT_EQ(index.shared_files().at(1).uploads, 0);
  EXPECT_THAT(host.files().content("VelMora_uploads.log"), HasSubstr("Stat:Client not recieving"));
  EXPECT_TRUE(log.empty());
}

TEST_F(UploadServerTest, SendsTheHeaderAloneWhateverTheDelay) {
  form.speed_upload.set_position(10);
  world.record();
  auto peer = ask(request("1", "a.bin"));
  world.run_for(200);
  EXPECT_EQ(peer->reads().at(0), header(kSize));
  EXPECT_THAT(write_times(), ElementsAre(0, 50, 60, 70));
  EXPECT_EQ(sent_to(*peer), content);

  world.conditions().latency_us = 200000;
  auto far = connect();
  far->send(request("1", "a.bin"));
  ASSERT_TRUE(world.run_until([&] { return !far->received().empty(); }, 1000));
  const std::int64_t header_came = world.now_ms();
  ASSERT_TRUE(world.run_until([&] { return far->received().size() > 200; }, 1000));
  EXPECT_GE(world.now_ms() - header_came, 200);
}

TEST_F(UploadServerTest, FollowsTheDelaySliderWhileItSends) {
  world.record();
  form.pack_upload.set_position(2000);
  auto peer = ask(request("1", "a.bin"));
  world.run_for(500);
  form.speed_upload.set_position(100);
  server.refresh();
  world.run_for(1000);
  EXPECT_EQ(sent_to(*peer), content);
  const std::vector<std::int64_t> times = write_times();
  ASSERT_EQ(times.size(), 6U);
  EXPECT_EQ(times[1], 500);
  for (std::size_t i = 3; i < 6; ++i) EXPECT_EQ(times[i] - times[i - 1], 100);
}

TEST_F(UploadServerTest, MakesUpForTicksThatCameLate) {
  LateMachine machine(host.platform());
  UploadServer late(machine.platform(), form, index, names, *this);
  late.listen(7000);
  form.pack_upload.set_position(100);
  auto peer = world.connect_raw("10.0.0.2", "10.0.0.1", 7000);
  world.run_for(5);
  peer->send(request("1", "a.bin"));
  world.run_for(50);
  struct Tick {
    std::int64_t late_ms;
    std::size_t packets;
  };
  // One that is late by a whole interval is two; the timer's next is then made up for already.
  const Tick ticks[] = {{0, 1},    {500, 2},  {0, 0},       {0, 1},
                        {1250, 3}, {1250, 1}, {100'000, 8}, {100'000, 1}};
  std::size_t packets = 0;
  for (const Tick& tick : ticks) {
    machine.late_ms = tick.late_ms;
    world.run_for(500);
    packets += tick.packets;
    EXPECT_EQ(sent_to(*peer), content.substr(0, 100 * packets)) << packets;
  }
}

// Every tick makes up for many, to a client that takes little at a time.
TEST_F(UploadServerTest, LateTicksNeverOverrunASlowReader) {
  const struct {
    std::size_t size;
    int packet;
    std::size_t first_round;
  } cases[] = {{600'000, 100'000, 600'000},     // its end comes before the round's
               {800'000, 100'000, 800'000},     // with the round's
               {3'000'000, 400'000, 800'000}};  // what may wait holds two packets
  for (const auto& c : cases) {
    SCOPED_TRACE(c.size);
    LateMachine machine(host.platform());
    UploadServer late(machine.platform(), form, index, names, *this);
    late.listen(7000);
    const std::string file(c.size, 'z');
    host.files().put("/d/a.bin", file);
    world.conditions().receive_window = 500;
    form.pack_upload.set_position(c.packet);
    auto peer = world.connect_raw("10.0.0.2", "10.0.0.1", 7000);
    world.run_for(5);
    peer->send(request("1", "a.bin"));
    world.run_for(100);
    ASSERT_EQ(peer->received(), header(c.size));
    peer->set_reading(false);
    for (int tick = 0; tick < 40; ++tick) {  // longer than a closed connection's rest is kept
      machine.late_ms += 100'000;
      world.run_for(500);
    }
    EXPECT_EQ(late.upload_slots().at(1).status, "Uploading");
    EXPECT_EQ(late.upload_slots().at(1).position, static_cast<std::int32_t>(c.first_round));
    peer->set_reading(true);
    world.conditions().receive_window = 1'000'000;
    for (int tick = 0; tick < 40; ++tick) {
      machine.late_ms += 100'000;
      world.run_for(500);
    }
    EXPECT_EQ(late.upload_slots().at(1).status, "Done");
    EXPECT_TRUE(peer->received() == header(c.size) + file) << peer->received().size();
    EXPECT_EQ(log.size(), 0U);
    late.shutdown();
  }
}

TEST_F(UploadServerTest, StopsByDoubleClickWithAMessageForItsOwnKind) {
  form.text_upload.set_text("Sorry,\r\nbye");
  form.log_upload.set_checked(true);
  auto own = ask(request("1", "a.bin", "User-Agent: VelMora 0.1.0:6345\r\n"));
  form.lupload.activate(1);  // nothing was opened yet
  EXPECT_EQ(status(1), "Uploading 0%");
  auto other = ask(request("1", "a.bin", "User-Agent: VelMorax\r\n"));
  world.run_for(500);
  form.lupload.activate(1);
  form.lupload.activate(2);
  form.lupload.activate(2);
  world.run_for(200);
  EXPECT_EQ(own->reads().back(), "VelMora-Stop: 11\r\nSorry,\r\nbye");
  EXPECT_EQ(own->reads().size(), 3U);
  EXPECT_EQ(sent_to(*other).size(), 4096U);
  for (const std::size_t row : {1U, 2U}) EXPECT_EQ(status(row), "You Stopped");
  EXPECT_TRUE(own->closed_by_peer());
  EXPECT_TRUE(other->closed_by_peer());
  EXPECT_THAT(host.files().content("VelMora_uploads.log"), HasSubstr("Stat:You Stopped"));
  server.refresh();
  EXPECT_EQ(server.active_uploads(), 0);

  // What could arrive in pieces is cut, never within a character.
  form.text_upload.set_text(std::string(1023, 'x') + "\xC3\xA9 and more");
  auto cut = ask(request("1", "a.bin", "User-Agent: VelMora 0.1.0:6345\r\n"));
  world.run_for(500);
  form.lupload.activate(1);
  world.run_for(200);
  EXPECT_EQ(cut->reads().back(), "VelMora-Stop: 1023\r\n" + std::string(1023, 'x'));
}

TEST_F(UploadServerTest, NeverMixesTheStopMessageWithPackets) {
  world.conditions().receive_window = 1000;
  form.pack_upload.set_position(kSize);
  const std::string own = "User-Agent: VelMora 0.1.0:6345\r\n";
  for (const bool reads_on : {true, false}) {
    world.record();
    const std::size_t written = write_times().size();
    auto peer = ask(request("1", "a.bin", own));
    peer->set_reading(false);
    world.run_for(600);
    form.lupload.activate(1);
    world.run_for(1000);
    EXPECT_EQ(write_times().size() - written, 2U);  // the header and the packet
    if (!reads_on) world.run_for(4500);
    peer->set_reading(true);
    world.run_for(1000);
    EXPECT_TRUE(peer->closed_by_peer());
    if (reads_on) {
      EXPECT_EQ(sent_to(*peer).substr(0, kSize), content);
      EXPECT_THAT(peer->reads().back(), testing::StartsWith("VelMora-Stop: "));
    } else {
      EXPECT_THAT(peer->received(), testing::Not(HasSubstr("VelMora-Stop: ")));
    }
  }
}

TEST_F(UploadServerTest, WithoutADelayItStillWaitsQuietlyForASlowReader) {
  host.files().put("/d/a.bin", std::string(300000, 'z'));
  world.conditions().receive_window = 20000;
  form.pack_upload.set_position(100000);
  form.speed_upload.set_position(0);
  auto peer = ask(request("1", "a.bin"));
  peer->set_reading(false);
  world.run_for(1000);
  const std::uint64_t before = form.lupload.version();  // every tick shows the list anew
  world.run_for(1000);
  EXPECT_LE(form.lupload.version() - before, 101U);
  peer->set_reading(true);
  const std::size_t whole = header(300000).size() + 300000;
  EXPECT_TRUE(world.run_until([&] { return peer->received().size() == whole; }, 5000));
  EXPECT_EQ(status(1), "Done");
}

TEST_F(UploadServerTest, OutlivesErrorsOfTheDisk) {
  auto peer = ask(request("1", "a.bin"));
  host.files().fail_next(1, 5);
  world.run_for(500);
  EXPECT_THAT(log, ElementsAre("upload_files Input/output error"));
  EXPECT_EQ(status(1), "Uploading 0%");
  world.run_for(2000);
  EXPECT_EQ(sent_to(*peer), content);
  EXPECT_EQ(status(1), "Done");

  log.clear();
  auto never = ask(request("1", "a.bin"));
  host.files().remove("/d/a.bin");
  world.run_for(10000);
  EXPECT_TRUE(never->closed_by_peer());
  EXPECT_EQ(never->received(), header(kSize));
  EXPECT_EQ(log.size(), 10U);
  EXPECT_EQ(status(1), "Disconnected");
}

TEST_F(UploadServerTest, EndsAnUploadWhoseFileShrank) {
  auto peer = ask(request("1", "a.bin"));
  host.files().put("/d/a.bin", content.substr(0, 5000));
  world.run_for(3000);
  EXPECT_TRUE(peer->closed_by_peer());
  EXPECT_EQ(sent_to(*peer), content.substr(0, 4096));
  EXPECT_EQ(status(1), "Disconnected");
  EXPECT_THAT(log, ElementsAre("upload_files Input past end of file"));
  EXPECT_EQ(index.shared_files().at(1).uploads, 0);
}

TEST_F(UploadServerTest, LogsOneLineWhateverTheNameHolds) {
  share({file("a\n\x1b[1m.bin")});
  host.files().put("/d/a\n\x1b[1m.bin", "x");
  form.log_upload.set_checked(true);
  world.set_local_time({2026, 3, 4, 5, 6, 7});
  auto peer = ask(request("1", "a\n\x1b[1m.bin"));
  EXPECT_EQ(host.files().content("VelMora_uploads.log"),
            "2026-03-04 05:06:07 a\\x0A\\x1B[1m.bin IP:client.example 10.0.0.2 Stat:Uploading\n");

  form.view_log_upload.click();
  EXPECT_THAT(host.screen().opened_files, ElementsAre("VelMora_uploads.log"));
  host.screen().programs_fail = true;
  form.view_log_upload.click();
  EXPECT_EQ(form.StatusBar.panel(1), "Can't start Notepad.exe ");

  world.run_for(600);
  host.files().fail_next(1, 28);
  world.run_for(500);
  EXPECT_EQ(status(1), "Done");
  EXPECT_THAT(log, ElementsAre("log_uploads No space left on device"));
}

TEST_F(UploadServerTest, HoldsABoundedNumberOfConnections) {
  std::vector<std::unique_ptr<RawPeer>> peers;
  for (std::size_t i = 0; i <= kMaxUploadSlots; ++i) {
    peers.push_back(world.connect_raw("10.0.0.2", "10.0.0.1", 6345));
    if (i % 100 == 0) world.run_for(5);
  }
  world.run_for(100);
  EXPECT_EQ(form.lupload.rows(), kMaxUploadSlots);
  EXPECT_FALSE(peers[kMaxUploadSlots - 1]->closed_by_peer());
  EXPECT_TRUE(peers[kMaxUploadSlots]->closed_by_peer());
  server.shutdown();
  world.run_for(100);
  for (const auto& peer : peers) EXPECT_TRUE(peer->closed_by_peer());
}

}  // namespace
}  // namespace velmora::sim
