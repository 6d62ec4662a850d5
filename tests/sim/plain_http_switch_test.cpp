// The switch plain_http, on and off: what the upload port says to common programs, and what
// downloads get from common web servers. Classic traffic is the same either way.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "protocol/payloads.h"
#include "servent_rig.h"
#include "share/upload_server.h"
#include "support/doubles.h"
#include "transfer/download_list.h"

namespace velmora::sim {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kClassicHeader =
    "HTTP 200 OK\r\nServer: Velmora\r\nContent-type:application/binary\r\nContent-length: ";
const std::string kClassicRequest =
    "GET /get/5/my song.mp3 HTTP:/1.0\r\nUser-Agent: VelMora 0.1.0:6345\r\n"
    "Connection: Keep-Alive\r\nRange: bytes=0-10\r\n\r\n";

ServentRig::Fields with(bool on, ServentRig::Fields fields = {}) {
  fields.emplace_back("plain_http_behaviour", on ? "on" : "off");
  fields.emplace_back("down_config", "/down");
  return fields;
}

struct UploadRig : ServentRig {
  explicit UploadRig(bool on, const Fields& fields = {}) : ServentRig(with(on, fields)) {
    content.resize(10'000);
    std::iota(content.begin(), content.end(), '\0');
    host.files().put("/music/a song.bin", content);
    host.files().put("/music/empty", "");
    form().upload_config.enter("/music");
    form().scan_config.click();
    world.run_for(100);
  }
  std::unique_ptr<RawPeer> ask(const std::string& request) {
    auto peer = world.connect_raw("10.0.0.2", "10.0.0.1", 6345);
    peer->send(request);
    world.run_for(10);
    return peer;
  }
  std::string status(std::size_t row) { return form().lupload.cell(row, 3); }

  std::string content;
};

std::string body(const RawPeer& peer) {
  return peer.received().substr(peer.received().find("\r\n\r\n") + 4);
}

TEST(PlainHttpSwitch, TheUploadPortAnswersCommonPrograms) {
  UploadRig rig(true);
  rig.form().log_upload.set_checked(true);
  auto whole = rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\nHost: 10.0.0.1:6345\r\n\r\n");
  EXPECT_THAT(whole->received(), StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(whole->received(), HasSubstr("Content-Length: 10000\r\n"));
  EXPECT_EQ(rig.status(1), "Uploading 0%");
  rig.world.run_for(500);
  EXPECT_EQ(body(*whole), rig.content.substr(0, 4096)) << "one packet a tick, as for everybody";
  EXPECT_EQ(rig.status(1), "Uploading 40%");
  rig.world.run_for(1500);
  EXPECT_EQ(body(*whole), rig.content);
  EXPECT_TRUE(whole->closed_by_peer());
  EXPECT_EQ(rig.status(1), "Done");
  const std::string log = rig.host.files().content(kUploadLogFile);
  EXPECT_THAT(log, HasSubstr("a song.bin IP:? 10.0.0.2 Stat:Uploading\n"));
  EXPECT_THAT(log, EndsWith("a song.bin IP:? 10.0.0.2 Stat:Done\n"));

  auto part = rig.ask("GET /get/1/a%20song.bin HTTP/1.0\r\nRange: bytes=100-299\r\n\r\n");
  EXPECT_EQ(rig.status(1), "Resuming an upload 0%");
  EXPECT_EQ(rig.form().lupload.cell(1, 1), "a song.bin");
  rig.world.run_for(1000);
  EXPECT_THAT(part->received(), StartsWith("HTTP/1.1 206 Partial Content\r\n"));
  EXPECT_THAT(part->received(), HasSubstr("\r\nContent-Range: bytes 100-299/10000\r\n"));
  EXPECT_EQ(body(*part), rig.content.substr(100, 200));
  EXPECT_TRUE(part->closed_by_peer());

  auto head = rig.ask("HEAD /get/1/a%20song.bin HTTP/1.1\r\n\r\n");
  EXPECT_THAT(head->received(), EndsWith("Content-Length: 10000\r\n\r\n"));
  EXPECT_TRUE(head->closed_by_peer());
  EXPECT_EQ(rig.status(1), "Header sent");
}

TEST(PlainHttpSwitch, TheUploadPortSaysWhyThereIsNoFile) {
  UploadRig rig(true);
  const struct {
    const char* line;
    const char* status;
    const char* text;
  } cases[] = {
      {"GET /", "404", "That filenum (0) is No longer valid!\n"},
      {"GET /get/", "404", "That filenum (0) is No longer valid!\n"},
      {"GET /get/9/a%20song.bin", "404", "That filenum (9) is No longer valid!\n"},
      {"GET /get/1/A%20song.bin", "404", "points to the file: A song.bin\n"},
      {"GET /get/1/..%2Fmusic%2Fa%20song.bin", "404", "points to the file: ../music/a song.bin\n"},
      {"GET /get/1/../music/a song.bin", "404", "points to the file: ../music/a song.bin\n"},
      {"GET /get/2/empty", "404", "no longer exists\n"},
      {"GET /get/1/%", "400", "not understood.\n"},
      {"DELETE /get/1/a%20song.bin", "400", "not understood.\n"},
      {"HEAD /get/1/b", "404", "\r\n\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    auto peer = rig.ask(std::string(c.line) + " HTTP/1.1\r\n\r\n");
    EXPECT_THAT(peer->received(), StartsWith(std::string("HTTP/1.1 ") + c.status));
    EXPECT_THAT(peer->received(), EndsWith(c.text));
    EXPECT_TRUE(peer->closed_by_peer());
    EXPECT_EQ(rig.status(1), "Error, sent msg");
  }
  auto beyond = rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\nRange: bytes=10000-\r\n\r\n");
  EXPECT_THAT(beyond->received(), StartsWith("HTTP/1.1 416 "));
  EXPECT_THAT(beyond->received(), HasSubstr("Content-Range: bytes */10000\r\n"));
  EXPECT_EQ(rig.logged("upload"), 0);
}

TEST(PlainHttpSwitch, AFullServerSaysWhenToComeAgain) {
  UploadRig rig(true, {{"max_in_upload", "0"}});
  auto first = rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\n\r\n");
  rig.world.run_for(500);  // the list is recounted
  auto second = rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\n\r\n");
  EXPECT_THAT(second->received(), StartsWith("HTTP/1.1 503 Service Unavailable\r\nRetry-After: "));
  EXPECT_TRUE(second->closed_by_peer());
  EXPECT_EQ(rig.status(2), "Max, Refused");
}

TEST(PlainHttpSwitch, AClientThatLeavesWithEverythingIsServed) {
  UploadRig rig(true);
  for (const bool all : {true, false}) {
    auto peer = rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\nUser-Agent: VelMora 1\r\n\r\n");
    rig.world.run_for(all ? 1500 : 1000);
    EXPECT_EQ(body(*peer) == rig.content, all);
    peer->close();
    rig.world.run_for(600);
    EXPECT_EQ(rig.status(1), all ? "Done" : "Client not recieving");
  }
  // A stop message would be bytes of the file for such a client, whatever it calls itself.
  auto peer = rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\nUser-Agent: VelMora 1\r\n\r\n");
  rig.world.run_for(500);
  rig.form().lupload.activate(1);
  rig.world.run_for(500);
  EXPECT_TRUE(peer->closed_by_peer());
  EXPECT_EQ(body(*peer), rig.content.substr(0, 4096));
}

TEST(PlainHttpSwitch, ClassicRequestsGetTheClassicAnswer) {
  for (const bool on : {false, true}) {
    UploadRig rig(on);
    auto peer = rig.ask("GET /get/1/a song.bin HTTP:/1.0\r\nRange: bytes=9000-10000\r\n\r\n");
    rig.world.run_for(1100);
    EXPECT_EQ(peer->received(), kClassicHeader + "10000\r\n\r\n" + rig.content.substr(9000));
    EXPECT_EQ(peer->reads().front(), kClassicHeader + "10000\r\n\r\n");
    EXPECT_EQ(rig.ask("GET /get/7/x HTTP:/1.0\r\n\r\n")->received(),
              "That filenum (7) is No longer valid!");
  }
}

TEST(PlainHttpSwitch, OffACommonRequestIsAClassicOne) {
  UploadRig rig(false);
  EXPECT_EQ(rig.ask("GET /get/1/a%20song.bin HTTP/1.1\r\n\r\n")->received(),
            "That filenum (1) No longer points to the file: a%20song.bin");
  EXPECT_EQ(rig.ask("GET /get/1/a song.bin HTTP/1.1\r\n\r\n")->received(),
            kClassicHeader + "10000\r\n\r\n");
  EXPECT_EQ(rig.ask("HEAD /get/1/a HTTP/1.1\r\n\r\n")->received(), "");
}

// A servent with a result that lies on a server which the test plays.
struct DownloadRig : ServentRig {
  explicit DownloadRig(bool on) : ServentRig(with(on)) {
    host.files().make_folder("/down");
    world.listen_raw("10.0.0.3", 8080, [this](RawPeer& peer) { peers.push_back(&peer); });
    QueryHit hit;
    hit.hits = 1;
    hit.port = 8080;
    hit.address = "10.0.0.3";
    hit.results = {{5, 10, "my song.mp3"}};
    auto neighbour = connected_peer("10.0.0.2");
    neighbour->send(descriptor("0123456789abcdef", 129, 1, 0, query_reply_to_str(hit, log_sink)));
    EXPECT_TRUE(world.run_until([&] { return form().lfound.rows() == 1; }, 5000));
    form().lfound.activate(1);
  }
  // Presses the button; the request that comes next on a connection of its own.
  std::string start() {
    const std::size_t before = peers.size();
    form().resume_down.click();
    return next(before);
  }
  std::string next(std::size_t before) {
    EXPECT_TRUE(world.run_until(
        [&] { return peers.size() > before && !peers.back()->received().empty(); }, 1000));
    return peers.back()->take();
  }
  // Every string is one block.
  void send(const std::vector<std::string>& blocks) {
    RawPeer& peer = *peers.back();
    for (const std::string& block : blocks) {
      peer.send(block);
      world.run_for(10);
    }
  }
  // Refuses the classic request as web servers do, and takes the other one.
  std::string refuse_classic_request() {
    const std::size_t before = peers.size();
    send({"HTTP/1.1 400 Bad Request\r\nContent-Length: 3\r\nConnection: close\r\n\r\nno\n"});
    return next(before);
  }
  std::string status() { return form().ldown.cell(1, 3); }
  std::string file() { return host.files().content("/down/my song.mp3"); }
  std::string partial() { return host.files().content("/down/my song.mp3.download"); }

  Lines log_sink;
  std::vector<RawPeer*> peers;
};

std::string standard_request(const std::string& range = {}) {
  return "GET /get/5/my%20song.mp3 HTTP/1.1\r\nHost: 10.0.0.3:8080\r\n"
         "User-Agent: VelMora 0.1.0:6345\r\n" +
         range + "Connection: close\r\n\r\n";
}

TEST(PlainHttpSwitch, AWebServerIsAskedOnceMoreInItsOwnForm) {
  for (const std::string refusal :
       {"HTTP/1.1 400 Bad Request\r\n\r\n", "HTTP/1.0 505 x\n\n", "<html>bad version</html>"}) {
    DownloadRig rig(true);
    EXPECT_EQ(rig.start(), kClassicRequest);
    rig.send({refusal});
    ASSERT_EQ(rig.peers.size(), 2U) << refusal;
    EXPECT_TRUE(rig.peers[0]->closed_by_peer());
    EXPECT_EQ(rig.next(1), standard_request());
    rig.send({"HTTP/1.1 200 OK\r\nServer: nginx\r\nContent-Length: 12\r\n\r\nabcdef", "ghijkl+"});
    EXPECT_EQ(rig.status(), "Done");
    EXPECT_EQ(rig.file(), "abcdefghijkl");
    EXPECT_THAT(rig.form().ldown.cell_tooltip(1, 4), HasSubstr("nginx"));
  }
}

TEST(PlainHttpSwitch, AReplyMayComeInAnyPieces) {
  DownloadRig rig(true);
  rig.start();
  rig.refuse_classic_request();
  const std::string reply =
      "HTTP/1.1 206 Partial Content\r\ncontent-length: 10\r\n"
      "CONTENT-RANGE: bytes 0-9/10\r\n\r\n0123VelMora-Stop: 0\r\n";
  for (const char byte : reply) rig.send({std::string(1, byte)});
  EXPECT_EQ(rig.status(), "Done");
  EXPECT_EQ(rig.file(), "0123VelMor") << "what looks like a stop message is a part of the file";
}

TEST(PlainHttpSwitch, ResumingNeverShiftsTheBytes) {
  const struct {
    const char* name;
    const char* reply;
    const char* status;
    const char* file;
    const char* range_after;  // of the next attempt, where this one fetched nothing
  } cases[] = {
      {"the rest", "HTTP/1.1 206 x\r\nContent-Range: bytes 4-9/10\r\n\r\n456789", "Done",
       "0123456789", ""},
      {"all of it", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123456789", "Done", "0123456789",
       ""},
      {"another file", "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nabcdef", "Done", "abcdef", ""},
      {"a part of another file", "HTTP/1.1 206 x\r\nContent-Range: bytes 4-5/6\r\n\r\nef",
       "The file has changed", "", "Range: bytes=0-10\r\n"},
      {"another part", "HTTP/1.1 206 x\r\nContent-Range: bytes 5-9/10\r\n\r\n56789",
       "Another part was sent", "", "Range: bytes=4-10\r\n"},
      {"chunks", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n4567\r\n0\r\n\r\n",
       "Sent in a form that is not understood", "", "Range: bytes=4-10\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    DownloadRig rig(true);
    rig.start();
    rig.refuse_classic_request();
    rig.send({"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01", "23"});
    EXPECT_EQ(rig.status(), "Downloading 40%");
    rig.peers.back()->close();
    rig.world.run_for(10);
    EXPECT_EQ(rig.status(), "Disconnected");
    EXPECT_THAT(rig.start(), HasSubstr("HTTP:/1.0\r\n"));
    EXPECT_EQ(rig.refuse_classic_request(), standard_request("Range: bytes=4-\r\n"));
    rig.send({c.reply});
    EXPECT_EQ(rig.status(), c.status);
    EXPECT_EQ(rig.file(), c.file);
    if (*c.range_after == '\0') continue;
    EXPECT_EQ(rig.partial(), "0123");
    EXPECT_THAT(rig.start(), HasSubstr(c.range_after));
  }
}

// The other file's reply ends before its first byte, so none of the earlier file may count.
TEST(PlainHttpSwitch, BytesOfAnEarlierFileAreNotGoneOnFrom) {
  DownloadRig rig(true);
  rig.start();
  rig.refuse_classic_request();
  rig.send({"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123"});
  rig.peers.back()->close();
  rig.world.run_for(10);
  rig.start();
  rig.refuse_classic_request();
  rig.send({"HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n"});
  rig.peers.back()->close();
  rig.world.run_for(10);
  EXPECT_EQ(rig.status(), "Disconnected");
  EXPECT_THAT(rig.start(), HasSubstr("Range: bytes=0-6\r\n"));
  EXPECT_EQ(rig.refuse_classic_request(), standard_request());
  rig.send({"HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nabcdef"});
  EXPECT_EQ(rig.status(), "Done");
  EXPECT_EQ(rig.file(), "abcdef");
}

TEST(PlainHttpSwitch, ARefusalIsToldAndEndsTheAttempt) {
  const struct {
    std::string reply;
    const char* status;
  } cases[] = {
      {"HTTP/1.1 404 Not Found\r\n\r\n<html>", "Not found (404)"},
      {"HTTP/1.1 503 x\r\n\r\n", "Busy, try later (503)"},
      {"<html>", "No HTTP OK!"},
      {"HTTP/1.1 200 OK\r\nX: " + std::string(9000, 'x'), "No HTTP OK!"},
  };
  for (const auto& c : cases) {
    DownloadRig rig(true);
    rig.start();
    rig.refuse_classic_request();
    rig.send({c.reply});
    EXPECT_EQ(rig.status(), c.status);
    EXPECT_THAT(rig.form().ldown.cell_tooltip(1, 3),
                StartsWith("Received: " + c.reply.substr(0, 5)));
    rig.world.run_for(10'000);
    EXPECT_EQ(rig.peers.size(), 2U) << "two attempts, never more";
    EXPECT_TRUE(rig.peers[1]->closed_by_peer());
  }
}

TEST(PlainHttpSwitch, TheSecondAttemptHasItsOwnFourSeconds) {
  DownloadRig rig(true);
  rig.start();
  rig.world.run_for(3000);
  rig.world.conditions().silent_connect_probability = 1;
  rig.send({"HTTP/1.1 400 x\r\n\r\n"});
  EXPECT_EQ(rig.status(), "Requesting to Connect");
  rig.world.run_for(3980);
  EXPECT_EQ(rig.status(), "Requesting to Connect");
  rig.world.run_for(20);
  EXPECT_EQ(rig.status(), "Not accepted");
}

TEST(PlainHttpSwitch, AServentIsAskedAndUnderstoodAsEver) {
  for (const bool on : {false, true}) {
    DownloadRig rig(on);
    EXPECT_EQ(rig.start(), kClassicRequest);
    // Kept: bytes in the header's block are not written.
    rig.send({kClassicHeader + "10\r\n\r\nlost", "01234"});
    EXPECT_EQ(rig.partial(), "01234");
    EXPECT_EQ(rig.status(), "Downloading 50%");
  }
  for (const bool on : {false, true}) {
    DownloadRig rig(on);
    rig.start();
    rig.send({"That filenum (5) is No longer valid!"});
    EXPECT_EQ(rig.status(), "No HTTP OK!");
    EXPECT_EQ(rig.peers.size(), 1U);
  }
}

TEST(PlainHttpSwitch, MayBeTurnedOffWhileATransferRuns) {
  DownloadRig rig(true);
  rig.start();
  rig.refuse_classic_request();
  rig.send({"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01"});
  rig.form().behaviour.choose(kClassicProfile);
  rig.send({"23456789"});
  EXPECT_EQ(rig.status(), "Done");
  EXPECT_EQ(rig.file(), "0123456789");
}

}  // namespace
}  // namespace velmora::sim
