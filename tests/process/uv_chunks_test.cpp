// Where the chunks that a reader is told of begin and end, against a peer that is a bare socket.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstring>
#include <random>
#include <thread>

#include "platform/uv/uv_address.h"
#include "platform/uv/uv_descriptor.h"
#include "uv_rig.h"

namespace velmora::uv {
namespace {

using testing::ElementsAre;

// Strings that begin with their length, in two bytes.
std::string made(std::size_t size, char fill = 'x') {
  std::string bytes(size, fill);
  bytes[0] = static_cast<char>(size & 0xFF);
  bytes[1] = static_cast<char>(size >> 8);
  return bytes;
}
std::size_t lacking(std::string_view bytes) {
  std::size_t at = 0;
  while (at + 2 <= bytes.size()) {
    at += static_cast<unsigned char>(bytes[at]) + 256U * static_cast<unsigned char>(bytes[at + 1]);
  }
  return at < bytes.size() ? 1 : at - bytes.size();
}

void set(int fd, int level, int option, int value) {
  checked([&] { return setsockopt(fd, level, option, &value, sizeof value); });
}

class UvChunksTest : public testing::Test {
 protected:
  bool until(const std::function<bool()>& done) { return run_until(loop, done); }

  // A bare socket that our end dials; it takes no larger segments than this.
  void dialled_by(End& end, int segment, int buffer) {
    const Descriptor listening(
        checked([] { return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); }));
    set(listening.get(), IPPROTO_TCP, TCP_MAXSEG, segment);
    set(listening.get(), SOL_SOCKET, SO_RCVBUF, buffer);
    const sockaddr_in address = *parse_address("127.0.0.1", 0);
    checked([&] {
      return ::bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    });
    checked([&] { return ::listen(listening.get(), 1); });
    end.socket = network.connect("127.0.0.1", local_end(listening.get()).port, 0, end);
    ASSERT_TRUE(until([&] { return end.connects == 1; }));
    bare = Descriptor(checked([&] { return ::accept(listening.get(), nullptr, nullptr); }));
  }

  // A bare socket that has dialled our end.
  void dials(End& end) {
    Port port(network);
    bare = Descriptor(checked([] { return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); }));
    const sockaddr_in address = *parse_address("127.0.0.1", port.number());
    checked([&] {
      return ::connect(bare.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    });
    ASSERT_TRUE(until([&] { return port.accepted.size() == 1; }));
    end.hold(std::move(port.accepted.front()));
  }
  void send_bare(std::string_view bytes) const {
    ASSERT_EQ(::send(bare.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }

  // More than one read brings, all in the kernel, and nothing in `reads`. The kernel takes so much
  // after it has seen how fast it is read.
  void queue_backlog(End& end) {
    const std::string first(64U << 20, 'w');
    std::jthread sender([&] { send_bare(first); });
    std::size_t came = 0;
    end.after_read = [&] {
      came += end.reads.back().size();
      end.reads.clear();
    };
    ASSERT_TRUE(until([&] { return came == first.size(); }));
    sender.join();
    end.after_read = {};
    end.socket->set_reading(false);
    send_bare(std::string(kBacklog, 'b'));
    int queued = 0;
    ASSERT_TRUE(until([&] { return ioctl(bare.get(), SIOCOUTQ, &queued) == 0 && queued == 0; }));
  }

  static constexpr std::size_t kBacklog = 3 * kMostReadAtOnce;
  UvLoop loop;
  UvNetwork network{loop, "127.0.0.1"};
  Descriptor bare;
};

// Whenever the peer looks, what its kernel has ends where a string ends: in a trickle, in a
// torrent, and while the peer's window is shut.
TEST_F(UvChunksTest, WhatIsQueuedForThePeerEndsWhereAStringEnds) {
  constexpr int kSegment = 600;
  constexpr std::size_t kBytes = std::size_t{4} << 20;
  End end;
  dialled_by(end, kSegment, 64 << 10);
  std::minstd_rand chance(7);
  const auto size = [&] { return 23 + chance() % 78; };
  std::string sent;
  std::string received;
  std::vector<char> room(std::size_t{1} << 20);
  std::size_t cut = 0;
  std::size_t looks = 0;
  ASSERT_TRUE(until([&] {
    for (std::size_t bursts = chance() % 8; bursts > 0 && sent.size() < kBytes; --bursts) {
      if (end.socket->unsent() > kMaxUnsentPerSocket / 2) break;
      std::string run;
      std::vector<std::uint32_t> ends;
      for (std::size_t i = chance() % 200; i > 0; --i) {
        run += made(size());
        ends.push_back(static_cast<std::uint32_t>(run.size()));
      }
      end.socket->write_run(run, ends);
      const std::string single = made(size());
      end.socket->write(single);
      sent += run + single;
    }
    if (chance() % 4 != 0) return false;
    const ssize_t count = ::recv(bare.get(), room.data(), room.size(), MSG_DONTWAIT);
    if (count > 0) {
      const std::string_view chunk(room.data(), static_cast<std::size_t>(count));
      ++looks;
      if (lacking(chunk) != 0) ++cut;
      received += chunk;
    }
    return sent.size() >= kBytes && received.size() == sent.size();
  }));
  EXPECT_EQ(cut, 0U) << "of " << looks;
  EXPECT_TRUE(received == sent);
}

TEST_F(UvChunksTest, AStringOfSeveralSegmentsIsAnnouncedWholeAndWhatFollowsApart) {
  End end;
  std::size_t asked = 0;
  end.lacking = [&](std::string_view queued) {
    ++asked;
    return lacking(queued);
  };
  dials(end);
  const std::string before = made(60, 'b');
  const std::string large = made(32'000, 'l');
  const std::string after = made(70, 'a');
  send_bare(before + large.substr(0, 10'000));
  ASSERT_TRUE(until([&] { return asked == 1; }));
  EXPECT_TRUE(end.reads.empty());
  send_bare(large.substr(10'000, 1));
  send_bare(large.substr(10'001) + after);
  ASSERT_TRUE(until([&] { return end.reads.size() == 2; }));
  EXPECT_THAT(end.reads, ElementsAre(before + large, after));
  EXPECT_LE(asked, 3U) << "not for every packet";
}

// A backlog is read bit by bit, and still no string is cut, whether its header or its end lies
// behind what is read at once.
TEST_F(UvChunksTest, EveryReadOfABacklogEndsWhereAStringEnds) {
  End end;
  dials(end);
  end.lacking = lacking;
  std::string sent;
  for (std::size_t i = 0; sent.size() < 40 * kMostReadAtOnce; ++i) sent += made(2 + i % 90);
  std::jthread sender([&] { send_bare(sent); });
  ASSERT_TRUE(until([&] { return end.received().size() == sent.size(); }));
  EXPECT_TRUE(end.received() == sent);
  for (const std::string& read : end.reads) {
    EXPECT_EQ(lacking(read), 0U);
    EXPECT_LT(read.size(), kMostReadAtOnce + 92);
  }
}

TEST_F(UvChunksTest, ABacklogOfWhichTheRestIsDroppedComesAsOne) {
  End end;
  dials(end);
  ASSERT_NO_FATAL_FAILURE(queue_backlog(end));
  end.lacking = [](std::string_view) { return kLacksAllQueued; };
  end.socket->set_reading(true);
  ASSERT_TRUE(until([&] { return !end.reads.empty(); }));
  EXPECT_EQ(end.received().size(), kBacklog);
  EXPECT_EQ(end.reads.size(), 1U);
}

TEST_F(UvChunksTest, ABacklogIsReadToItsEndThoughNothingCanBeWritten) {
  End end;
  dials(end);
  ASSERT_NO_FATAL_FAILURE(queue_backlog(end));
  const linger at_once{1, 0};
  checked([&] { return setsockopt(bare.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once); });
  bare = Descriptor();
  end.socket->write("to nobody");
  end.socket->set_reading(true);
  ASSERT_TRUE(until([&] { return end.disconnects == 1; }));
  EXPECT_EQ(end.received().size(), kBacklog);
}

TEST_F(UvChunksTest, WhatStaysAwayIsNotWaitedFor) {
  End end;
  end.lacking = lacking;
  dials(end);
  const std::string large = made(32'000, 'l');
  send_bare(large.substr(0, 100));
  ASSERT_TRUE(until([&] { return end.reads.size() == 1; }));
  send_bare(made(24, 'o'));
  ASSERT_TRUE(until([&] { return end.reads.size() == 2; }));
  EXPECT_THAT(end.reads, ElementsAre(large.substr(0, 100), made(24, 'o')));

  // Neither the end nor a pause of the reader loses it or hurries it.
  end.reads.clear();
  std::size_t asked = 0;
  end.lacking = [&](std::string_view queued) {
    ++asked;
    return lacking(queued);
  };
  send_bare(large.substr(0, 200));
  ASSERT_TRUE(until([&] { return asked == 1; }));
  end.socket->set_reading(false);
  bool long_after = false;
  const auto later = loop.make_timer(150, [&] { long_after = true; });
  later->set_enabled(true);
  ASSERT_TRUE(until([&] { return long_after; }));
  EXPECT_TRUE(end.reads.empty());
  bare = Descriptor();
  end.socket->set_reading(true);
  ASSERT_TRUE(until([&] { return end.disconnects == 1; }));
  EXPECT_THAT(end.reads, ElementsAre(large.substr(0, 200)));
}

}  // namespace
}  // namespace velmora::uv
