#include "platform/uv/uv_control_channel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <fstream>

#include "uv_rig.h"

namespace velmora::uv {
namespace {

using testing::ElementsAre;

// A client program that never waits.
class RawClient {
 public:
  explicit RawClient(const std::string& path)
      : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    stands_ =
        ::connect(fd_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  [[nodiscard]] bool stands() const { return stands_; }
  std::size_t say(std::string_view text) {
    const ssize_t count = ::send(fd_.get(), text.data(), text.size(), MSG_NOSIGNAL);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
  }
  void hang_up() { ::shutdown(fd_.get(), SHUT_WR); }
  const std::string& heard() {
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = ::recv(fd_.get(), buffer.data(), buffer.size(), 0)) > 0) {
      heard_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ended_ = ended_ || count == 0;
    return heard_;
  }
  bool ended() {
    heard();
    return ended_;
  }

 private:
  Descriptor fd_;
  bool stands_ = false;
  bool ended_ = false;
  std::string heard_;
};

class UvControlChannelTest : public testing::Test, public ControlChannelEvents {
 protected:
  void on_client_line(std::uint64_t client, std::string_view line) override {
    lines.emplace_back(line);
    last_client = client;
    if (on_line) on_line();
  }
  void on_client_gone(std::uint64_t client) override { gone.push_back(client); }
  bool until(const std::function<bool()>& done) { return run_until(loop, done); }

  TemporaryFolder folder;
  UvLoop loop;
  UvControlChannel channel{loop, folder.path()};
  std::vector<std::string> lines;
  std::vector<std::uint64_t> gone;
  std::uint64_t last_client = 0;
  std::function<void()> on_line;
};

TEST_F(UvControlChannelTest, LinesGoBothWaysOverAFileThatOnlyTheOwnerMayUse) {
  channel.open("control.sock", *this);
  struct stat status {};
  ASSERT_EQ(lstat(folder.path("control.sock").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);

  on_line = [&] { channel.send_line(last_client, "echo " + lines.back()); };
  RawClient client(folder.path("control.sock"));
  ASSERT_TRUE(client.stands());
  client.say("first\n\nthi");
  ASSERT_TRUE(until([&] { return lines.size() == 2; }));
  client.say("rd\nunfinished");
  client.hang_up();
  ASSERT_TRUE(until([&] { return client.ended(); }));
  EXPECT_THAT(lines, ElementsAre("first", "", "third"));
  EXPECT_EQ(client.heard(), "echo first\necho \necho third\n");
  EXPECT_THAT(gone, ElementsAre(last_client));
  channel.send_line(last_client, "nobody hears this");
}

TEST_F(UvControlChannelTest, ClosingRemovesTheFileAndLetsLastLinesLeave) {
  channel.open("control.sock", *this);
  const std::string last(3'000'000, 'z');
  on_line = [&] {
    channel.send_line(last_client, last);
    channel.close();
  };
  RawClient client(folder.path("control.sock"));
  client.say("quit\nnot heard\n");
  ASSERT_TRUE(until([&] { return client.ended(); }));
  EXPECT_TRUE(client.heard() == last + "\n");
  EXPECT_THAT(lines, ElementsAre("quit"));
  EXPECT_TRUE(gone.empty());
  EXPECT_FALSE(std::filesystem::exists(folder.path("control.sock")));
  EXPECT_FALSE(channel.parting());
}

TEST_F(UvControlChannelTest, AStaleFileIsReplacedAndNothingElse) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  folder.path("control.sock").copy(address.sun_path, sizeof address.sun_path - 1);
  {
    const Descriptor ended(::socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(::bind(ended.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  channel.open("control.sock", *this);
  EXPECT_TRUE(RawClient(folder.path("control.sock")).stands());
  EXPECT_EQ(code_of([&] { channel.open("again.sock", *this); }), Errc::address_in_use);
  channel.close();

  std::ofstream(folder.path("a file")) << "kept";
  EXPECT_EQ(code_of([&] { channel.open("a file", *this); }), Errc::address_in_use);
  EXPECT_TRUE(std::filesystem::exists(folder.path("a file")));
  EXPECT_EQ(code_of([&] { channel.open(std::string(108, 'x'), *this); }), Errc::bad_file_name);
  channel.open("control.sock", *this);
}

TEST_F(UvControlChannelTest, TooManyClientsAndTooLongLinesEndTheClient) {
  channel.open("control.sock", *this);
  std::vector<std::unique_ptr<RawClient>> clients;
  for (std::size_t i = 0; i <= kMaxControlClients; ++i) {
    clients.push_back(std::make_unique<RawClient>(folder.path("control.sock")));
    ASSERT_TRUE(clients.back()->stands());
    clients.back()->say("here\n");
    const bool last = i == kMaxControlClients;
    ASSERT_TRUE(until([&] { return last ? clients.back()->ended() : lines.size() == i + 1; }));
  }
  EXPECT_EQ(lines.size(), kMaxControlClients);

  const std::string flood(100'000, 'x');
  std::size_t said = 0;
  ASSERT_TRUE(until([&] {
    if (gone.empty()) said += clients[0]->say(flood);
    return !gone.empty();
  }));
  EXPECT_GT(said, kMaxControlLine);
  EXPECT_LT(said, kMaxControlLine + (std::size_t{2} << 20));
  EXPECT_TRUE(until([&] { return clients[0]->ended(); }));
  EXPECT_EQ(lines.size(), kMaxControlClients);
}

TEST_F(UvControlChannelTest, AClientFarBehindIsLetGo) {
  channel.open("control.sock", *this);
  RawClient client(folder.path("control.sock"));
  client.say("subscribe\n");
  ASSERT_TRUE(until([&] { return lines.size() == 1; }));
  const std::string line(std::size_t{9} << 20, 'n');
  int sent = 0;
  while (sent < 16) {
    channel.send_line(last_client, line);
    ++sent;
    EXPECT_TRUE(gone.empty());  // never inside the call
    run_turns(loop, 2);
    if (!gone.empty()) break;
  }
  EXPECT_EQ(sent, 8);
  EXPECT_THAT(gone, ElementsAre(last_client));
}

}  // namespace
}  // namespace velmora::uv
