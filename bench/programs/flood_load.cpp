// flood_load --to ADDRESS:PORT --peers K [--seconds S]: writes descriptors on every connection as
// fast as the servent's kernel takes them, query hits of 250 results among them, and throws away
// what comes back. Nothing is bounded but the time; the servent may drop what it likes. One line of
// JSON says how much was written.
#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/socket.h>

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

constexpr std::uint64_t kSecond = 1'000'000'000;
constexpr unsigned kPingEvery = 8;
constexpr std::size_t kBlock = std::size_t{64} << 10;
constexpr std::uint64_t kBlocksPerHit = 50;

void put_number(std::string& out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i) & 0xFF);
}

// A query hit of 250 results; the header is that of a query, changed.
std::string make_hit(DescriptorMaker& maker) {
  std::string payload(1, static_cast<char>(250));
  put_number(payload, 6345, 2);
  payload += std::string("\x0A\x01\x02\x03", 4);
  put_number(payload, 56, 4);
  for (std::uint32_t i = 1; i <= 250; ++i) {
    put_number(payload, i, 4);
    put_number(payload, 1'000'000 + i, 4);
    payload += fmt::format("flooded - a song number {:05} with a title.mp3", i);
    payload.append(2, '\0');
  }
  payload.append(16, 'g');
  std::string hit;
  maker.append_query(hit, payload.substr(3), 5);
  hit.replace(kHeaderBytes, std::string::npos, payload);
  hit[16] = static_cast<char>(129);
  return hit;
}

std::string make_block(DescriptorMaker& maker, bool with_hit) {
  std::string block;
  while (block.size() < kBlock) maker.append_to(block);
  return with_hit ? block + make_hit(maker) : block;
}

struct Peer {
  int socket = -1;
  std::string block = {};
  std::size_t left = 0;  // of the block's end, to be sent
};

int run(const Options& options) {
  raise_file_limit();
  const auto frames = make_frames("velmora");
  std::vector<Peer> peers;
  const int epoll = epoll_create1(EPOLL_CLOEXEC);
  for (const int socket :
       open_peers(parse_endpoint(options.text("to")), options.number("peers"), *frames)) {
    epoll_event event{};
    event.events = EPOLLIN | EPOLLOUT;
    event.data.u64 = peers.size();
    epoll_ctl(epoll, EPOLL_CTL_ADD, socket, &event);
    peers.push_back({.socket = socket});
  }
  DescriptorMaker maker(now_ns(), kPingEvery);
  std::string thrown_away(std::size_t{1} << 20, '\0');
  std::uint64_t written = 0;
  std::uint64_t read = 0;
  std::uint64_t blocks = 0;
  const std::uint64_t until = now_ns() + options.number("seconds", 5) * kSecond;
  while (now_ns() < until) {
    epoll_event events[64];
    const int ready = epoll_wait(epoll, events, 64, 100);
    for (int i = 0; i < ready; ++i) {
      Peer& peer = peers[static_cast<std::size_t>(events[i].data.u64)];
      if ((events[i].events & EPOLLIN) != 0) {
        const ssize_t count = recv(peer.socket, thrown_away.data(), thrown_away.size(), MSG_TRUNC);
        if (count == 0) throw std::runtime_error("the servent hung up");
        if (count > 0) read += static_cast<std::uint64_t>(count);
      }
      if ((events[i].events & EPOLLOUT) == 0) continue;
      if (peer.left == 0) {
        peer.block = make_block(maker, ++blocks % kBlocksPerHit == 0);
        peer.left = peer.block.size();
      }
      const ssize_t count = send(peer.socket, peer.block.data() + (peer.block.size() - peer.left),
                                 peer.left, MSG_NOSIGNAL);
      if (count < 0 && errno != EAGAIN) throw std::runtime_error("a connection was lost");
      if (count < 0) continue;
      peer.left -= static_cast<std::size_t>(count);
      written += static_cast<std::uint64_t>(count);
    }
  }
  fmt::print("{{\"written_bytes\": {}, \"read_bytes\": {}}}\n", written, read);
  return 0;
}

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  try {
    return velmora::bench::run(velmora::bench::Options(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "flood_load: %s\n", error.what());
    return 2;
  }
}
