// Downloads against a bare peer: the exact bytes of the request, what lies on disk after every kind
// of end, and the exact times of the two time-outs.
#include "transfer/download_client.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "platform/sim/sim_world.h"
#include "support/doubles.h"
#include "transfer/download_queue.h"

namespace velmora::sim {
namespace {

using namespace std::string_literals;

constexpr int kPort = 6345;

std::string header(const std::string& length) {
  return "HTTP 200 OK\r\nServer: Velmora\r\nContent-type:application/binary\r\nContent-length: " +
         length + "\r\n\r\n";
}

class NoNames : public HostNames {
 public:
  std::string dns_from_cache(const std::string&) override { return "?"; }
};

class DownloadTest : public testing::Test {
 protected:
  DownloadTest() {
    world_.add_host("10.0.0.2");
    world_.listen_raw("10.0.0.2", kPort, [this](RawPeer& peer) { peers_.push_back(&peer); });
    host_.files().make_folder("/down");
    form_.down_config.set_text("/down");
  }

  void queue(const std::string& name, float size, const std::string& address = "10.0.0.2") {
    QueryHit hit;
    hit.hits = 1;
    hit.port = kPort;
    hit.address = address;
    hit.results = {{5, size, name}};
    results_.set_query_reply_view(hit);
    results_.display_query_reply();
    form_.lfound.activate(form_.lfound.rows());
  }

  // Presses the button and waits for the (last) peer's request, which asks for this range.
  RawPeer& resume(const std::string& range = "") {
    const std::size_t before = peers_.size();
    form_.resume_down.click();
    EXPECT_TRUE(world_.run_until(
        [&] { return peers_.size() > before && !peers_.back()->received().empty(); }, 1000));
    EXPECT_NE(peers_.back()->received().find("Range: bytes=" + range), std::string::npos) << range;
    return *peers_.back();
  }

  // Every string is one block.
  void send(RawPeer& peer, const std::vector<std::string>& blocks) {
    for (const std::string& block : blocks) {
      peer.send(block);
      world_.run_for(10);
    }
  }

  std::string status(std::size_t row = 1) { return form_.ldown.cell(row, 3); }
  DownloadRecord& entry(std::size_t row = 1) { return downloads_.download_list().at(row); }
  SimFiles& files() { return host_.files(); }

  // The connection has ended on both sides and left nothing behind but the partial file.
  void expect_ended(const RawPeer& peer, const std::string& with_status, std::size_t row = 1) {
    EXPECT_EQ(status(row), with_status);
    EXPECT_LT(entry(row).state, 1);
    EXPECT_EQ(entry(row).file, nullptr);
    // After the last byte the close is left to the server for five seconds.
    world_.run_for(with_status == "Done" ? 5010 : 10);
    EXPECT_TRUE(peer.closed_by_peer() || !peer.connected());
  }

  SimWorld world_;
  SimHost& host_ = world_.add_host("10.0.0.1");
  Form form_;
  Lines log_;
  NoNames names_;
  std::vector<RawPeer*> peers_;
  Platform platform_ = host_.platform();
  SearchResults results_{platform_.loop, form_, log_, names_, [] {}};
  DownloadList downloads_{form_};
  DownloadClient client_{platform_.loop, platform_.network, platform_.files, form_,
                         log_,           downloads_,        "0.1.0"};
  DownloadQueue queue_{platform_.loop, platform_.files, form_, log_, results_, downloads_, client_};
};

TEST_F(DownloadTest, FetchesAFileAndGivesItItsFinalName) {
  queue("my song.mp3", 10);
  EXPECT_EQ(status(), "Queued");
  RawPeer& peer = resume();
  EXPECT_EQ(peer.received(),
            "GET /get/5/my song.mp3 HTTP:/1.0\r\n"
            "User-Agent: VelMora 0.1.0:6345\r\n"
            "Connection: Keep-Alive\r\n"
            "Range: bytes=0-10\r\n\r\n");
  send(peer, {header("12"), "abcdef"});
  EXPECT_EQ(status(), "Downloading 50%");
  const auto progress = form_.ldown.progress(1).value();
  EXPECT_EQ(progress.done, 6);
  EXPECT_EQ(progress.total, 12);
  EXPECT_TRUE(progress.running);
  EXPECT_EQ(form_.ldown.cell(1, 1), "my song.mp3");
  EXPECT_EQ(form_.ldown.cell(1, 2), "12");
  EXPECT_EQ(form_.ldown.cell(1, 4), "10.0.0.2:6345");
  EXPECT_EQ(files().names("/down"), std::vector<std::string>{"my song.mp3.download"});
  send(peer, {"ghijkl and more than was promised"});
  expect_ended(peer, "Done");
  EXPECT_FALSE(form_.ldown.progress(1)->running);
  files().crash();
  EXPECT_EQ(files().names("/down"), std::vector<std::string>{"my song.mp3"});
  EXPECT_EQ(files().content("/down/my song.mp3"), "abcdefghijkl");
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(DownloadTest, ResumesBehindTheBytesThatItCounted) {
  // A longer file from an earlier time lies there: it is overwritten in place and cut at the end.
  files().put("/down/song.mp3.download", "XXXXXXXXXXXXXXXXXXXXXXXXXXXX");
  queue("song.mp3", 10);
  RawPeer& first = resume();
  send(first, {header("10"), "0123"});
  first.close();
  world_.run_for(10);
  EXPECT_EQ(status(), "Disconnected");
  EXPECT_EQ(entry().bytes_received, 4U);

  RawPeer& second = resume("4-10\r\n");
  send(second, {header("10"), "45", "6789"});
  expect_ended(second, "Done");
  EXPECT_EQ(files().content("/down/song.mp3"), "0123456789");
}

TEST_F(DownloadTest, NeverWritesBehindAHole) {
  queue("song.mp3", 10);
  RawPeer& first = resume();
  send(first, {header("10"), "01234567"});
  first.reset();
  world_.run_for(10);
  files().put("/down/song.mp3.download", "012");

  RawPeer& second = resume("8-10\r\n");
  send(second, {header("10"), "89"});
  expect_ended(second, "Input past end of file");
  EXPECT_EQ(files().content("/down/song.mp3.download"), "012");
  EXPECT_EQ(log_.lines,
            std::vector<std::string>{"incomming_download_data: Input past end of file"});
  // What there is counts from now on; if that goes too, no file is made for a rest.
  files().remove("/down/song.mp3.download");
  RawPeer& third = resume("3-10\r\n");
  send(third, {header("10"), "3456789"});
  expect_ended(third, "Input past end of file");
  EXPECT_TRUE(files().names("/down").empty());

  send(resume(), {header("10"), "0123456789"});
  EXPECT_EQ(files().content("/down/song.mp3"), "0123456789");
}

TEST_F(DownloadTest, AnAttemptWithoutAnAnswerIsNotAcceptedAfterFourSeconds) {
  struct Case {
    const char* what;
    std::string address;
    double silent;
  };
  for (const Case& c : {Case{"refused", "10.0.0.9", 0}, Case{"never answered", "10.0.0.2", 1},
                        Case{"accepted, then silent", "10.0.0.2", 0}}) {
    SCOPED_TRACE(c.what);
    world_.conditions().silent_connect_probability = c.silent;
    queue(c.what + ".mp3"s, 10, c.address);
    const std::size_t row = downloads_.download_list().upper_bound();
    for (std::size_t i = 1; i < row; ++i) entry(i).state = 1;  // leaves the others alone
    form_.resume_down.click();
    EXPECT_EQ(status(row), "Requesting to Connect");
    world_.run_for(3999);
    EXPECT_EQ(entry(row).state, 1);
    EXPECT_NE(status(row), "Not accepted");
    world_.run_for(1);
    EXPECT_EQ(status(row), "Not accepted");
    EXPECT_LT(entry(row).state, 1);
  }
  world_.run_for(10);
  EXPECT_TRUE(peers_.back()->closed_by_peer());
}

TEST_F(DownloadTest, ASilentTransferEndsAfterTwoMinutes) {
  queue("song.mp3", 10);
  RawPeer& peer = resume();
  peer.send(header("10"));
  world_.run_for(100'500);  // far beyond the 4 s of the attempt
  EXPECT_EQ(entry().state, 1);
  peer.send("01");
  ASSERT_TRUE(world_.run_until([&] { return entry().bytes_received == 2; }, 1000));
  world_.run_for(119'999);
  EXPECT_EQ(status(), "Downloading 20%");
  world_.run_for(1);
  expect_ended(peer, "No Data, Disconnecting");
  EXPECT_EQ(files().content("/down/song.mp3.download"), "01");
}

// The end of the file may look like the beginning of a stop message; the end of the connection
// tells them apart.
TEST_F(DownloadTest, BytesHeldBackAtTheEndAreOfTheFileOrAreAskedForAgain) {
  struct Case {
    const char* name;
    const char* bytes;
    bool closes;  // otherwise the peer says nothing more
    const char* status;
  };
  for (const Case& c : {Case{"whole.mp3", "0123VelM", true, "Done"},
                        Case{"half.mp3", "0123Vel", true, "Disconnected"},
                        Case{"silent.mp3", "0123VelM", false, "Done"},
                        Case{"unended.mp3", "0123Vel", false, "No Data, Disconnecting"}}) {
    SCOPED_TRACE(c.name);
    queue(c.name, 8);
    const std::size_t row = form_.ldown.rows();
    RawPeer& peer = resume();
    send(peer, {header("8"), c.bytes});
    EXPECT_EQ(entry(row).bytes_received, 4U);
    if (c.closes) peer.close();
    world_.run_for(c.closes ? 10 : 120'010);
    EXPECT_EQ(status(row), c.status);
    const bool all = c.status == std::string_view("Done");
    EXPECT_EQ(files().content(std::string("/down/") + c.name), all ? "0123VelM" : "");
    EXPECT_EQ(entry(row).bytes_received, all ? 8U : 4U);
    entry(row).state = 1;  // leaves it alone from now on
  }
}

// A disk that cannot say what lies there must not pass for one that has the finished file.
TEST_F(DownloadTest, IsNeverDoneWithoutTheFile) {
  queue("song.mp3", 10);
  RawPeer& peer = resume();
  send(peer, {header("10"), "01234"});
  files().put("/down/song.mp3", "another file");
  send(peer, {"56789"});
  expect_ended(peer, "File exists");
  files().remove("/down/song.mp3");
  RawPeer& again = resume();
  files().fail_next(1, EIO);
  send(again, {header("10")});
  expect_ended(again, "Input/output error");
  files().remove("/down/song.mp3.download");
  RawPeer& gone = resume();
  send(gone, {header("10")});
  expect_ended(gone, "Input past end of file");
  EXPECT_EQ(entry().bytes_received, 0U);
}

TEST_F(DownloadTest, EveryEndKeepsTheStatusThatExplainsIt) {
  struct Case {
    std::vector<std::string> blocks;
    std::string status;
    std::string message;
    std::string on_disk;  // of the partial file
  };
  const std::string foreign = "HTTP/1.1 200 OK\r\nContent-length: 10\r\n\r\n0123456789";
  const std::vector<Case> cases = {
      {{foreign}, "No HTTP OK!", "Received: " + foreign, ""},
      {{std::string(100, 'x')}, "No HTTP OK!", "Received: " + std::string(75, 'x'), ""},
      {{"HTTP 200 OK\r\nServer: Vel", "mora\r\nContent-length: 10\r\n\r\n"},
       "No HTTP OK!",
       "Received: HTTP 200 OK\r\nServer: Vel",
       ""},
      {{header("1e30")}, "Overflow", "", ""},
      {{header("-5")}, "Overflow", "", ""},
      {{header("ten")}, "Type mismatch", "", ""},
      {{header("10"), "0123VelMora-Stop: 9\r\nnot\r\nnow!"}, "Stopped", "not\r\nnow!", "0123"},
      {{header("10"), "0123", "VelMora-Stop: 3\r\nbye"}, "Stopped", "bye", "0123"},
      {{header("10") + "VelMora-Stop: 3\r\nbye"}, "Stopped", "bye", ""},
      // In pieces, of which the first would complete the file.
      {{header("8"), "0123Vel", "Mora-Stop: 3\r\nb", "ye"}, "Stopped", "bye", "0123"},
      {{header("8"), "0123", "VelMora-Stop: 3", "\r\nbye"}, "Stopped", "bye", "0123"},
      // What only looks like the beginning of one is of the file.
      {{header("24"), "0123VelMora-Stop: 3\r\nb", "ye?"}, "Done", "", ""},
  };
  int number = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.blocks));
    const std::string name = "song" + std::to_string(++number) + ".mp3";
    queue(name, 10);
    const std::size_t row = form_.ldown.rows();
    RawPeer& peer = resume();
    send(peer, c.blocks);
    expect_ended(peer, c.status, row);
    EXPECT_EQ(entry(row).message, c.message);
    EXPECT_EQ(form_.ldown.cell_tooltip(row, 3), c.message);
    EXPECT_EQ(files().content("/down/" + name + ".download"), c.on_disk);
    entry(row).state = 1;  // leaves it alone from now on
  }
}

// A file that is whole gets its name in a turn of its own; whatever happens until then, it does.
TEST_F(DownloadTest, NothingComesBetweenTheLastByteAndDone) {
  const std::vector<std::function<void(RawPeer&)>> table = {
      [](RawPeer& peer) { peer.send("VelMora-Stop: 3\r\nbye"); },
      [](RawPeer& peer) { peer.send("more than was promised"); },
      [](RawPeer& peer) { peer.close(); },
      [this](RawPeer&) { form_.resume_down.click(); },
      [this](RawPeer&) { client_.close_all(); },
  };
  for (std::size_t i = 0; i < table.size(); ++i) {
    SCOPED_TRACE(i);
    const std::string name = "song" + std::to_string(i) + ".mp3";
    queue(name, 4);
    RawPeer& peer = resume();
    send(peer, {header("4"), "012"});
    peer.send("3");
    ASSERT_TRUE(world_.run_until([&] { return entry().bytes_received == 4; }, 100));
    table[i](peer);
    world_.run_for(10);
    expect_ended(peer, "Done");
    EXPECT_EQ(files().content("/down/" + name), "0123");
    EXPECT_EQ(entry().message, "");
  }
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(DownloadTest, EndsThatComeTogetherTakeATurnEach) {
  constexpr std::size_t kDownloads = 5;
  for (std::size_t i = 1; i <= kDownloads; ++i) queue("song" + std::to_string(i) + ".mp3", 4);
  form_.resume_down.click();
  world_.run_for(50);
  ASSERT_EQ(peers_.size(), kDownloads);
  for (RawPeer* peer : peers_) send(*peer, {header("4")});
  for (RawPeer* peer : peers_) peer->send("0123");
  const auto done = [this] {
    std::size_t count = 0;
    for (std::size_t i = 1; i <= kDownloads; ++i) count += status(i) == "Done" ? 1U : 0U;
    return count;
  };
  // The condition is looked at after every event, which is a turn.
  for (std::size_t count = 1; count <= kDownloads; ++count) {
    ASSERT_TRUE(world_.run_until([&] { return done() >= count; }, 100));
    EXPECT_EQ(done(), count);
  }
}

// The server is gone before the file is whole on disk, as one is that closes behind the last byte.
TEST_F(DownloadTest, AFinishedDownloadLeavesNothingToTheNextOne) {
  queue("small.mp3", 4);
  RawPeer& first = resume();
  send(first, {header("4")});
  first.send("0123");
  first.close();
  world_.run_for(10);
  EXPECT_EQ(status(), "Done");
  queue("slow.mp3", 4);  // the same place in the list, and the same element
  RawPeer& second = resume();
  send(second, {header("4"), "01"});
  world_.run_for(10'000);
  EXPECT_TRUE(second.connected());
  send(second, {"23"});
  expect_ended(second, "Done");
  EXPECT_EQ(files().content("/down/slow.mp3"), "0123");
}

TEST_F(DownloadTest, NeverReplacesAFile) {
  queue("song.mp3", 10);
  RawPeer& peer = resume();
  send(peer, {header("10"), "01234"});
  files().put("/down/song.mp3", "another file");
  send(peer, {"56789"});
  expect_ended(peer, "File exists");
  EXPECT_EQ(files().content("/down/song.mp3"), "another file");
  EXPECT_EQ(files().content("/down/song.mp3.download"), "0123456789");
  EXPECT_EQ(log_.lines, std::vector<std::string>{"incomming_download_data: File exists"});

  // Out of the way, the whole partial file takes its name without being fetched again.
  files().remove("/down/song.mp3");
  RawPeer& again = resume("10-10\r\n");
  send(again, {header("10")});
  expect_ended(again, "Done");
  EXPECT_EQ(files().content("/down/song.mp3"), "0123456789");

  // A finished file that is asked for once more stays as it is.
  RawPeer& finished = resume();
  send(finished, {header("10"), "9"});
  EXPECT_FALSE(finished.closed_by_peer());  // the server says so on its next tick
  expect_ended(finished, "Done");
  EXPECT_EQ(files().names("/down"), std::vector<std::string>{"song.mp3"});
  EXPECT_EQ(files().content("/down/song.mp3"), "0123456789");
}

TEST_F(DownloadTest, BytesBehindTheHeaderInItsBlockAreNotWritten) {
  queue("song.mp3", 10);
  RawPeer& peer = resume();
  send(peer, {header("10") + "01234", "56789"});
  EXPECT_EQ(files().content("/down/song.mp3.download"), "56789");
  EXPECT_EQ(status(), "Downloading 50%");
  peer.close();
  world_.run_for(10);

  // What was written lies in the wrong place, so all of it is asked for again.
  RawPeer& second = resume("0-10\r\n");
  send(second, {header("10"), "012"});
  second.close();
  world_.run_for(10);
  RawPeer& third = resume("3-10\r\n");
  send(third, {header("10") + "3456", "789"});
  third.close();
  world_.run_for(10);
  RawPeer& fourth = resume("3-10\r\n");
  send(fourth, {header("10"), "3456789"});
  expect_ended(fourth, "Done");
  EXPECT_EQ(files().content("/down/song.mp3"), "0123456789");
}

TEST_F(DownloadTest, AFileMayHoldTheLineOfAHeader) {
  const std::string inside = "HTTP 200 OK\r\n\r\nand so on";
  queue("capture.txt", 10);
  RawPeer& peer = resume();
  // The second block that is nothing but a header is one: it neither writes nor opens anew.
  send(peer, {header("26"), "start:", header("40"), inside});
  EXPECT_EQ(entry().size, "40");
  EXPECT_EQ(files().content("/down/capture.txt.download"), "start:" + inside);
  // A size below what is there ends it; the bytes stay.
  send(peer, {header("12")});
  expect_ended(peer, "Input past end of file");
  EXPECT_EQ(files().content("/down/capture.txt.download"), "start:" + inside);
}

TEST_F(DownloadTest, AResetAfterAnyByteLosesNothingThatCame) {
  const std::string reply = header("6");
  for (std::size_t cut = 0; cut < reply.size() + 6; ++cut) {
    SCOPED_TRACE(cut);
    const std::string name = "song" + std::to_string(cut);
    queue(name + ".mp3", 6);
    RawPeer& first = resume();
    send(first, {reply.substr(0, cut)});
    const std::size_t came = cut > reply.size() ? cut - reply.size() : 0;
    if (came > 0) send(first, {std::string("012345").substr(0, came)});
    first.reset();
    world_.run_for(10);
    EXPECT_LT(entry().state, 1);
    RawPeer& again = resume(std::to_string(came) + "-");
    send(again, {reply, std::string("012345").substr(came)});
    expect_ended(again, "Done");
    EXPECT_EQ(files().content("/down/" + name + ".mp3"), "012345");
  }
}

TEST_F(DownloadTest, StrangersNamesStayInsideTheFolder) {
  queue("../../home/user/x.sh", 4);
  RawPeer& peer = resume();
  EXPECT_EQ(peer.received().substr(0, 42), "GET /get/5/../../home/user/x.sh HTTP:/1.0\r");
  send(peer, {header("4"), "1234"});
  expect_ended(peer, "Done");
  EXPECT_EQ(form_.ldown.cell(1, 1), "../../home/user/x.sh");
  const auto names = files().names("/down");
  ASSERT_EQ(names.size(), 1U);
  EXPECT_EQ(names[0].substr(0, 20), ".._.._home_user_x_" + names[0].substr(18, 2));

  queue("evil\r\nHost: x.mp3", 4);
  form_.resume_down.click();
  EXPECT_EQ(status(1), "Not accepted");  // it took the finished entry's place
  EXPECT_LT(entry(1).state, 1);
  world_.run_for(10'000);
  EXPECT_EQ(peers_.size(), 1U);
}

TEST_F(DownloadTest, ErrorsOfTheDiskEndTheTransferWithTheirText) {
  queue("song.mp3", 10);
  form_.down_config.set_text("");
  RawPeer& nowhere = resume();
  send(nowhere, {header("10")});
  expect_ended(nowhere, "No such file or directory");
  EXPECT_TRUE(files().names("/down").empty());

  form_.down_config.set_text("/down");
  RawPeer& full = resume();
  send(full, {header("10"), "0123"});
  files().set_capacity(4);
  send(full, {"456"});
  expect_ended(full, "No space left on device");
  EXPECT_EQ(entry().bytes_received, 4U);
  files().set_capacity(1000);
  RawPeer& again = resume("4-10\r\n");
  send(again, {header("10"), "456789"});
  EXPECT_EQ(files().content("/down/song.mp3"), "0123456789");
  EXPECT_EQ(log_.lines.size(), 2U);
}

TEST_F(DownloadTest, QueueingRefusesNamesItHasAndReusesFinishedEntries) {
  queue("song.mp3", 4);
  queue("song.ogg", 8, "10.0.0.3");
  EXPECT_EQ(form_.StatusBar.panel(1), "This file is already qued to Download.");
  EXPECT_EQ(form_.ldown.rows(), 1U);
  queue("other.mp3", 4);
  EXPECT_EQ(form_.ldown.rows(), 2U);

  form_.resume_down.click();
  world_.run_for(10);
  for (RawPeer* peer : peers_) {
    if (peer->received().find("song.mp3") != std::string::npos) send(*peer, {header("4"), "1234"});
  }
  EXPECT_EQ(status(1), "Done");
  queue("third.mp3", 4);
  EXPECT_EQ(form_.ldown.rows(), 2U);
  EXPECT_EQ(form_.ldown.cell(1, 1), "third.mp3");
  EXPECT_EQ(status(1), "Queued");
  EXPECT_EQ(entry(1).bytes_received, 0U);

  // An entry whose numbers agree while it still is running keeps its place.
  queue("empty.mp3", 0);
  EXPECT_EQ(form_.ldown.cell(3, 1), "empty.mp3");
  resume();
  queue("fourth.mp3", 4);
  EXPECT_EQ(form_.ldown.cell(3, 1), "empty.mp3");
  EXPECT_EQ(form_.ldown.rows(), 4U);
}

TEST_F(DownloadTest, OneClickStartsAllThatWait) {
  form_.max_down.set_text("1");
  for (int i = 0; i < 10; ++i) queue("file" + std::to_string(i) + ".mp3", 4);
  form_.resume_down.click();
  world_.run_for(10);
  EXPECT_EQ(peers_.size(), 10U);
  form_.resume_down.click();  // running entries are left alone
  world_.run_for(10);
  EXPECT_EQ(peers_.size(), 10U);

  client_.close_all();
  world_.run_for(10);
  for (const RawPeer* peer : peers_) EXPECT_TRUE(peer->closed_by_peer());
}

}  // namespace
}  // namespace velmora::sim
