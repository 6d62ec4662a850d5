// hold_load: what it costs a server to hold connections.
//
//   hold_load --to ADDRESS:PORT --frames NAME --server PID --idle N [--busy M] [--seconds S]
//
// N connections say nothing; M others ping at ten a second each with a TTL that ends at the
// servent, and every second one query goes to everybody (servents only). All pings must be answered
// and every connection must get every query. Shorter than the silence after which a servent hangs
// up. One line of JSON: memory a connection, the time to connect, answers and how long they took.
#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
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

constexpr std::uint64_t kSecond = 1'000'000'000;
constexpr std::uint64_t kPingsPerSecond = 10;  // of each busy connection

struct Peer {
  int socket = -1;
  std::string rest = {};
  std::uint64_t pinged_at = 0;
  std::uint64_t pings = 0;
  std::uint64_t pongs = 0;
  std::uint64_t queries = 0;
};

class HoldLoad {
 public:
  HoldLoad(const Endpoint& to, const Frames& frames) : to_(to), frames_(frames) {}

  void add(std::size_t count) {
    for (const int socket : open_peers(to_, count, frames_)) {
      epoll_event event{};
      event.events = EPOLLIN;
      event.data.u64 = peers_.size();
      epoll_ctl(epoll_, EPOLL_CTL_ADD, socket, &event);
      peers_.push_back({.socket = socket});
    }
  }

  // The peers from `first` on are busy.
  void run(std::size_t first, std::uint64_t seconds) {
    const std::size_t busy = peers_.size() - first;
    const std::uint64_t step = kSecond / (kPingsPerSecond * busy);
    std::uint64_t due = now_ns();
    const std::uint64_t until = due + seconds * kSecond;
    std::uint64_t query_due = due;
    for (std::size_t next = 0; due < until; due += step, next = (next + 1) % busy) {
      while (now_ns() < due) receive(1);
      ping(peers_[first + next]);
      if (due >= query_due) {
        query(peers_[first + next]);
        query_due += kSecond;
      }
    }
    const std::uint64_t end = now_ns() + 2 * kSecond;
    while (!complete() && now_ns() < end) receive(10);
  }

  [[nodiscard]] std::uint64_t unanswered() const {
    std::uint64_t missing = 0;
    for (const Peer& peer : peers_) missing += peer.pings - peer.pongs;
    return missing;
  }
  [[nodiscard]] std::uint64_t missing_copies() const {
    std::uint64_t got = 0;
    for (const Peer& peer : peers_) got += peer.queries;
    return queries_ * (peers_.size() - 1) - got;
  }
  double answer_ms(double quantile) {
    if (waits_.empty()) return 0;
    std::sort(waits_.begin(), waits_.end());
    const auto last = static_cast<double>(waits_.size() - 1);
    return static_cast<double>(waits_[static_cast<std::size_t>(quantile * last)]) / 1e6;
  }

 private:
  [[nodiscard]] bool complete() const { return unanswered() == 0 && missing_copies() == 0; }

  void ping(Peer& peer) {
    bytes_.clear();
    maker_.append_ping(bytes_, 1);
    send_all(peer.socket, bytes_);
    peer.pinged_at = now_ns();
    ++peer.pings;
  }

  void query(Peer& peer) {
    bytes_.clear();
    maker_.append_query(bytes_, "anybody there", 2);
    send_all(peer.socket, bytes_);
    ++queries_;
  }

  void receive(int timeout_ms) {
    epoll_event events[256];
    const int ready = epoll_wait(epoll_, events, 256, timeout_ms);
    for (int i = 0; i < ready; ++i) read(peers_[static_cast<std::size_t>(events[i].data.u64)]);
  }

  void read(Peer& peer) {
    char block[4096];
    const ssize_t count = recv(peer.socket, block, sizeof block, 0);
    if (count == 0) throw std::runtime_error("the servent hung up");
    if (count < 0) return;
    peer.rest.append(block, static_cast<std::size_t>(count));
    const Received got = frames_.read(peer.rest);
    peer.rest.erase(0, got.used);
    peer.queries += got.copies;
    for (std::uint64_t i = 0; i < got.pongs; ++i) waits_.push_back(now_ns() - peer.pinged_at);
    peer.pongs += got.pongs;
  }

  Endpoint to_;
  const Frames& frames_;
  int epoll_ = epoll_create1(EPOLL_CLOEXEC);
  DescriptorMaker maker_{now_ns(), 0};
  std::vector<Peer> peers_;
  std::vector<std::uint64_t> waits_;
  std::string bytes_;
  std::uint64_t queries_ = 0;
};

int run(const Options& options) {
  raise_file_limit();
  const auto server = static_cast<pid_t>(options.number("server"));
  const auto frames = make_frames(options.text("frames"));
  if (!frames) throw std::runtime_error("no such --frames");
  const std::size_t idle = options.number("idle");
  const std::size_t busy = options.number("busy", 0);

  HoldLoad load(parse_endpoint(options.text("to")), *frames);
  const std::uint64_t base_kib = resident_kib(server);
  const std::uint64_t start = now_ns();
  load.add(idle);
  const double connecting = static_cast<double>(now_ns() - start) / 1e9;
  usleep(500'000);  // what follows a welcome is held back for a moment
  const std::uint64_t held_kib = resident_kib(server);
  if (busy > 0) {
    load.add(busy);
    usleep(500'000);
  }
  const std::uint64_t cpu_before = processor_ns(server);
  const std::uint64_t seconds = options.number("seconds", 5);
  if (busy > 0) load.run(idle, seconds);
  const double share =
      static_cast<double>(processor_ns(server) - cpu_before) / 1e9 / static_cast<double>(seconds);
  fmt::print(
      "{{\"connections\": {}, \"connect_s\": {:.2f}, \"bytes_each\": {:.0f}, "
      "\"unanswered\": {}, \"missing_copies\": {}, \"answer_p50_ms\": {:.3f}, "
      "\"answer_p99_ms\": {:.3f}, \"server_share\": {:.3f}}}\n",
      idle + busy, connecting,
      static_cast<double>(held_kib - base_kib) * 1024 / static_cast<double>(idle),
      load.unanswered(), load.missing_copies(), load.answer_ms(0.5), load.answer_ms(0.99), share);
  return load.unanswered() == 0 && load.missing_copies() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  try {
    return velmora::bench::run(velmora::bench::Options(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hold_load: %s\n", error.what());
    return 2;
  }
}
