// relay_load: feeds a relay on K connections in turn and counts the copies on every other one.
//
//   relay_load --to ADDRESS:PORT --frames velmora|bare|nats|mqtt --peers K --server PID
//              [--ms N] [--batch N] [--read 1] [--rate PER_SECOND]
//
// Without --rate it keeps a few batches of descriptors on their way, so that nothing has a reason
// to be dropped; with it one descriptor leaves at a time. Every byte that is due must arrive. With
// --read the copies are read and their identifiers compared; else they are counted by their bytes
// and thrown away unread, so that the load does not become what is measured. One line of JSON tells
// the rest.
#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <exception>
#include <stdexcept>

#include "load/accounts.h"
#include "load/descriptors.h"
#include "load/frames.h"
#include "load/options.h"
#include "load/peers.h"
#include "load/tally.h"

namespace velmora::bench {
namespace {

constexpr std::uint64_t kSecond = 1'000'000'000;
constexpr unsigned kPingEvery = 8;
constexpr std::size_t kBatch = 192;       // descriptors; 12 KiB, which one segment takes whole
constexpr std::size_t kMostOnTheWay = 8;  // batches
constexpr std::size_t kMostCopiesOnTheWay = 400'000;
constexpr std::uint64_t kStalled = 3 * kSecond;

std::size_t batches_on_the_way(std::size_t peers, std::size_t batch) {
  const std::size_t fitting = kMostCopiesOnTheWay / (batch * peers);
  return std::min(kMostOnTheWay, std::max<std::size_t>(fitting, 2));
}

class RelayLoad {
 public:
  RelayLoad(const Options& options, const Frames& frames)
      : frames_(frames),
        read_copies_(options.number("read", 0) != 0 || !frames.only_copies()),
        peers_(open_peers(parse_endpoint(options.text("to")), options.number("peers"), frames)),
        rests_(peers_.size()),
        batch_(options.number("batch", kBatch)),
        tally_(peers_.size(), batches_on_the_way(peers_.size(), batch_)),
        block_(std::size_t{1} << 20, '\0') {
    epoll_ = epoll_create1(EPOLL_CLOEXEC);
    for (std::size_t i = 0; i < peers_.size(); ++i) {
      epoll_event event{};
      event.events = EPOLLIN;
      event.data.u64 = i;
      epoll_ctl(epoll_, EPOLL_CTL_ADD, peers_[i], &event);
    }
  }

  // As much as the relay takes.
  void press(std::uint64_t until) {
    while (now_ns() < until) {
      while (tally_.room()) send_batch(batch_);
      if (!receive(100) && stalled()) return;
    }
  }

  // One descriptor at a time, so many a second.
  void drip(std::uint64_t until, std::uint64_t rate) {
    std::uint64_t due = now_ns();
    while (due < until) {
      if (tally_.room()) send_batch(1);
      due += kSecond / rate;
      const timespec when{static_cast<time_t>(due / kSecond), static_cast<long>(due % kSecond)};
      clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &when, nullptr);
      while (receive(0)) {
      }
    }
  }

  // What is on its way arrives, or does not.
  void drain() {
    while (!tally_.all_arrived() && (receive(100) || !stalled())) {
    }
  }

  [[nodiscard]] const Tally& tally() const { return tally_; }
  [[nodiscard]] std::size_t wrong_peers() const { return read_copies_ ? tally_.wrong_peers() : 0; }
  [[nodiscard]] std::uint64_t split() const { return split_; }

 private:
  void send_batch(std::size_t descriptors) {
    SentBatch batch{.peer = next_peer_, .descriptors = descriptors};
    frame_.clear();
    for (std::size_t i = 0; i < descriptors; ++i) {
      descriptor_.clear();
      const MadeDescriptor made = maker_.append_to(descriptor_);
      frames_.append(frame_, descriptor_);
      batch.copy_bytes += frames_.copy_bytes(made.bytes);
      batch.identifier_sum += made.identifier_sum;
      if (made.ping && frames_.answers_pings()) batch.answer_bytes += kPongBytes;
    }
    next_peer_ = (next_peer_ + 1) % peers_.size();
    tally_.sent(batch);
    write(peers_[batch.peer]);
  }

  // A record's end keeps the kernel from putting the next batch into the same segment.
  void write(int socket) {
    std::string_view rest = frame_;
    while (!rest.empty()) {
      const ssize_t count = send(socket, rest.data(), rest.size(), MSG_NOSIGNAL | MSG_EOR);
      if (count < 0 && errno != EAGAIN) throw std::runtime_error("a connection was lost");
      if (count < 0) {
        receive(1);
        continue;
      }
      rest.remove_prefix(static_cast<std::size_t>(count));
      if (!rest.empty()) ++split_;
    }
  }

  // Whether anything came.
  bool receive(int timeout_ms) {
    epoll_event events[256];
    const int ready = epoll_wait(epoll_, events, 256, timeout_ms);
    bool came = false;
    for (int i = 0; i < ready; ++i) {
      const auto peer = static_cast<std::size_t>(events[i].data.u64);
      came = (read_copies_ ? read(peer) : count(peer)) || came;
    }
    if (came) last_came_ = now_ns();
    return came;
  }

  bool count(std::size_t peer) {
    const ssize_t bytes = recv(peers_[peer], block_.data(), block_.size(), MSG_TRUNC);
    if (bytes == 0) throw std::runtime_error("the server closed a connection");
    if (bytes > 0) tally_.received(peer, static_cast<std::uint64_t>(bytes), 0, 0);
    return bytes > 0;
  }

  bool read(std::size_t peer) {
    const ssize_t bytes = recv(peers_[peer], block_.data(), block_.size(), 0);
    if (bytes == 0) throw std::runtime_error("the server closed a connection");
    if (bytes < 0) return false;
    const std::string_view came =
        std::string_view(block_).substr(0, static_cast<std::size_t>(bytes));
    std::string& rest = rests_[peer];
    const bool whole = rest.empty();
    if (!whole) rest += came;
    const std::string_view all = whole ? came : std::string_view(rest);
    const Received got = frames_.read(all);
    if (got.wants_pong) send_all(peers_[peer], "PONG\r\n");
    tally_.received(peer, got.copy_bytes, got.copies, got.identifier_sum);
    rest = std::string(all.substr(got.used));
    return true;
  }

  [[nodiscard]] bool stalled() const {
    return !tally_.all_arrived() && now_ns() - last_came_ > kStalled;
  }

  const Frames& frames_;
  bool read_copies_;
  std::vector<int> peers_;
  std::vector<std::string> rests_;
  std::size_t batch_;
  Tally tally_;
  DescriptorMaker maker_{now_ns(), kPingEvery};
  std::string block_;
  std::string frame_;
  std::string descriptor_;
  int epoll_ = -1;
  std::size_t next_peer_ = 0;
  std::uint64_t last_came_ = now_ns();
  std::uint64_t split_ = 0;
};

int run(const Options& options) {
  raise_file_limit();
  const auto frames = make_frames(options.text("frames"));
  if (!frames) throw std::runtime_error("no such --frames");
  const auto server = static_cast<pid_t>(options.number("server"));
  RelayLoad load(options, *frames);
  usleep(200'000);  // what follows a welcome is held back for a moment

  const std::uint64_t server_before = processor_ns(server);
  const std::uint64_t load_before = processor_ns(getpid());
  const std::uint64_t start = now_ns();
  const std::uint64_t until = start + options.number("ms", 2000) * (kSecond / 1000);
  if (const std::uint64_t rate = options.number("rate", 0); rate > 0) {
    load.drip(until, rate);
  } else {
    load.press(until);
  }
  load.drain();
  const auto ns = static_cast<double>(now_ns() - start);
  const auto server_ns = static_cast<double>(processor_ns(server) - server_before);
  const auto load_ns = static_cast<double>(processor_ns(getpid()) - load_before);

  const auto in = static_cast<double>(load.tally().descriptors());
  const double out = in * static_cast<double>(options.number("peers") - 1);
  fmt::print(
      "{{\"in_per_s\": {:.0f}, \"out_per_s\": {:.0f}, \"server_ns_per_copy\": {:.1f}, "
      "\"server_share\": {:.2f}, \"load_share\": {:.2f}, \"wrong_bytes\": {}, "
      "\"wrong_peers\": {}, \"split\": {}}}\n",
      in * 1e9 / ns, out * 1e9 / ns, server_ns / out, server_ns / ns, load_ns / ns,
      load.tally().wrong_bytes(), load.wrong_peers(), load.split());
  return load.tally().wrong_bytes() == 0 && load.wrong_peers() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  try {
    return velmora::bench::run(velmora::bench::Options(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "relay_load: %s\n", error.what());
    return 2;
  }
}
