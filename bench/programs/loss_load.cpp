// loss_load: feeds one servent and taps another, which stands behind a link that may be slow or
// lose packets; both in network namespaces of their own.
//
//   loss_load --feed-namespace NAME --feed ADDRESS:PORT --tap-namespace NAME --tap ADDRESS:PORT
//             --descriptors N [--hits M] [--hit-every MS]
//
// The feeder sends N pings and queries, as many bytes at a time as the tap has seen arrive; the tap
// sends M queries of its own which the far servent answers with query hits. It does not read what
// comes, as a servent passes a descriptor that was cut on as it is; what does not come within a
// second is given up. One line of JSON; the servents' own counters tell what was lost where.
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "load/accounts.h"
#include "load/descriptors.h"
#include "load/frames.h"
#include "load/options.h"
#include "load/peers.h"

namespace velmora::bench {
namespace {

constexpr std::uint64_t kMillisecond = 1'000'000;
constexpr unsigned kPingEvery = 8;
constexpr std::uint64_t kBatch = 64;
constexpr std::uint64_t kMostOnTheWay = 256 << 10;  // bytes
constexpr std::uint64_t kGivenUp = 1000 * kMillisecond;
constexpr std::uint64_t kSignOfLife = 5000 * kMillisecond;

// Sockets belong to the namespace in which they were made.
int open_in(const std::string& name, const Endpoint& endpoint, const Frames& frames) {
  const int space = open(("/var/run/netns/" + name).c_str(), O_RDONLY | O_CLOEXEC);
  if (space < 0 || setns(space, CLONE_NEWNET) != 0) {
    throw std::runtime_error("cannot enter the namespace " + name);
  }
  close(space);
  return open_peers(endpoint, 1, frames).front();
}

class LossLoad {
 public:
  LossLoad(int feed, int tap) : feed_(feed), tap_(tap) {}

  void run(std::uint64_t descriptors, std::uint64_t hits, std::uint64_t hit_every_ms) {
    std::uint64_t hit_due = now_ns();
    while (sent_ < descriptors || asked_ < hits) {
      if (sent_ < descriptors && on_the_way() < kMostOnTheWay) feed();
      if (asked_ < hits && now_ns() >= hit_due) {
        ask();
        hit_due += hit_every_ms * kMillisecond;
      }
      stay();
      receive(sent_ < descriptors && on_the_way() < kMostOnTheWay / 2 ? 0 : 1);
      if (now_ns() - last_came_ > kGivenUp) give_up();
    }
    while (on_the_way() > 0) {
      receive(10);
      if (now_ns() - last_came_ > kGivenUp) give_up();
    }
  }

  [[nodiscard]] std::uint64_t sent() const { return sent_; }
  [[nodiscard]] std::uint64_t asked() const { return asked_; }

 private:
  [[nodiscard]] std::uint64_t on_the_way() const {
    return sent_bytes_ - std::min(sent_bytes_, arrived_bytes_ + given_up_);
  }

  void feed() {
    if (on_the_way() == 0) last_came_ = now_ns();
    bytes_.clear();
    for (std::uint64_t i = 0; i < kBatch; ++i) maker_.append_to(bytes_);
    write(feed_);
    sent_ += kBatch;
    sent_bytes_ += bytes_.size();
  }

  void ask() {
    bytes_.clear();
    maker_.append_query(bytes_, "record", 5);
    write(tap_);
    ++asked_;
  }

  // A neighbour that is silent is dropped; this goes no further than the tapped servent.
  void stay() {
    if (now_ns() < life_due_) return;
    life_due_ = now_ns() + kSignOfLife;
    bytes_.clear();
    maker_.append_query(bytes_, "nothing", 1);
    write(tap_);
  }

  void write(int socket) {
    std::string_view rest = bytes_;
    while (!rest.empty()) {
      const ssize_t count = send(socket, rest.data(), rest.size(), MSG_NOSIGNAL | MSG_EOR);
      if (count < 0 && errno != EAGAIN) throw std::runtime_error("a connection was lost");
      if (count < 0) {
        receive(1);
      } else {
        rest.remove_prefix(static_cast<std::size_t>(count));
      }
    }
  }

  void give_up() {
    given_up_ += on_the_way();
    last_came_ = now_ns();
  }

  void receive(int timeout_ms) {
    pollfd ready[2] = {{feed_, POLLIN, 0}, {tap_, POLLIN, 0}};
    if (poll(ready, 2, timeout_ms) <= 0) return;
    char block[65536];
    if (ready[0].revents != 0 && recv(feed_, block, sizeof block, MSG_TRUNC) == 0) {
      throw std::runtime_error("the fed servent hung up");
    }
    if (ready[1].revents == 0) return;
    const ssize_t count = recv(tap_, block, sizeof block, MSG_TRUNC);
    if (count == 0) throw std::runtime_error("the tapped servent hung up");
    if (count < 0) return;
    arrived_bytes_ += static_cast<std::uint64_t>(count);
    last_came_ = now_ns();
  }

  int feed_;
  int tap_;
  DescriptorMaker maker_{now_ns(), kPingEvery};
  std::string bytes_;
  std::uint64_t sent_ = 0;
  std::uint64_t sent_bytes_ = 0;
  std::uint64_t arrived_bytes_ = 0;
  std::uint64_t given_up_ = 0;  // bytes
  std::uint64_t asked_ = 0;
  std::uint64_t life_due_ = now_ns();
  std::uint64_t last_came_ = now_ns();
};

int run(const Options& options) {
  const auto frames = make_frames("velmora");
  const int feed =
      open_in(options.text("feed-namespace"), parse_endpoint(options.text("feed")), *frames);
  const int tap =
      open_in(options.text("tap-namespace"), parse_endpoint(options.text("tap")), *frames);
  usleep(200'000);
  LossLoad load(feed, tap);
  const std::uint64_t start = now_ns();
  load.run(options.number("descriptors"), options.number("hits", 0),
           options.number("hit-every", 20));
  fmt::print("{{\"sent\": {}, \"asked\": {}, \"seconds\": {:.1f}}}\n", load.sent(), load.asked(),
             static_cast<double>(now_ns() - start) / 1e9);
  return 0;
}

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  try {
    return velmora::bench::run(velmora::bench::Options(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "loss_load: %s\n", error.what());
    return 2;
  }
}
