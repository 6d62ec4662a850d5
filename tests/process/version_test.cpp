// One version wherever a program shows it, and to whomever it tells it.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>

#include "process/program.h"

namespace velmora::process {
namespace {

using testing::HasSubstr;

constexpr int kPatienceMs = 10'000;

// An upload port that takes one request and answers nothing.
class UploadPort {
 public:
  UploadPort(const char* address, std::uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    inet_pton(AF_INET, address, &place.sin_addr);
    const int yes = 1;
    setsockopt(fd_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    EXPECT_EQ(bind(fd_, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    EXPECT_EQ(listen(fd_, 1), 0);
  }
  ~UploadPort() { close(fd_); }
  UploadPort(const UploadPort&) = delete;
  UploadPort& operator=(const UploadPort&) = delete;

  [[nodiscard]] std::string request() const {
    if (!readable(fd_)) return "nobody came";
    const int peer = accept(fd_, nullptr, nullptr);
    std::string text;
    char block[1024];
    while (text.find("\r\n\r\n") == std::string::npos && readable(peer)) {
      const ssize_t count = read(peer, block, sizeof block);
      if (count <= 0) break;
      text.append(block, static_cast<std::size_t>(count));
    }
    close(peer);
    return text;
  }

 private:
  static bool readable(int fd) {
    pollfd wish{fd, POLLIN, 0};
    return poll(&wish, 1, kPatienceMs) == 1;
  }

  int fd_;
};

std::string output_of(std::vector<std::string> arguments) {
  Program program(std::move(arguments));
  EXPECT_EQ(program.wait(), 0) << program.errors();
  return program.output();
}

std::string ask(const TemporaryFolder& profile, std::vector<std::string> words) {
  words.insert(words.begin(), {"velmora-cli", "--profile", profile.path()});
  return output_of(std::move(words));
}

TEST(Version, IsTheSameWhereverItIsShown) {
  const std::string line = output_of({"velmorad", "--version"});
  ASSERT_EQ(line.rfind("velmorad ", 0), 0U);
  const std::string version = line.substr(9, line.size() - 10);
  EXPECT_EQ(output_of({"velmora-cli", "--version"}), "velmora-cli " + version + "\n");
#ifdef VELMORA_WITH_WINDOW
  EXPECT_EQ(output_of({"velmora", "--version"}), "velmora " + version + "\n");
#endif

  // The sharer tells a port for uploads on which the test itself hears the other's request.
  TemporaryFolder sharer_profile, fetcher_profile, shared, downloads;
  std::ofstream(shared.path() + "/a song.ogg") << "some bytes";
  const UploadPort upload_port("127.0.0.15", 6401);
  Program sharer({"velmorad", "--profile", sharer_profile.path(), "--listen", "127.0.0.15"});
  Program fetcher({"velmorad", "--profile", fetcher_profile.path(), "--listen", "127.0.0.16",
                   "--set", "down_config=" + downloads.path()});
  ASSERT_TRUE(sharer.wait_for_line("runs on profile")) << sharer.errors();
  ASSERT_TRUE(fetcher.wait_for_line("velmorad " + version + " runs on profile"));
  EXPECT_EQ(ask(fetcher_profile, {"get", "version"}), "Version: " + version + "\n");
  ask(sharer_profile, {"set", "upport_config", "6401"});
  ask(sharer_profile, {"share", shared.path()});
  ask(fetcher_profile, {"connect", "127.0.0.15"});
  ask(fetcher_profile, {"search", "song"});
  ask(fetcher_profile, {"download", "--detach", "1"});
  EXPECT_THAT(upload_port.request(), HasSubstr("\r\nUser-Agent: VelMora " + version + ":6345\r\n"));
}

}  // namespace
}  // namespace velmora::process
