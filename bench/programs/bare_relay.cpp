// bare_relay ADDRESS PORT: the least that relays descriptors: cuts what comes by the length in each
// header, appends each descriptor to what every other connection still has to send, and writes once
// a connection and turn. One thread, one epoll, no tables, no counters, no limits, no answers. What
// the servent's relay is measured against.
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "load/descriptors.h"
#include "load/peers.h"

namespace velmora::bench {
namespace {

constexpr std::string_view kHello = "GNUTELLA CONNECT/0.4\n\n";
constexpr std::string_view kWelcome = "GNUTELLA OK\n\n";

struct Connection {
  int socket = -1;
  std::string in;
  std::string out;
  bool greeted = false;
  bool waits = false;    // for the kernel to take more
  bool planned = false;  // to be written at the end of this turn
};

class BareRelay {
 public:
  explicit BareRelay(const Endpoint& endpoint) : block_(std::size_t{1} << 18, '\0') {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = socket_address(endpoint);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener_, 200) != 0) {
      throw std::runtime_error("cannot listen");
    }
    watch(EPOLL_CTL_ADD, listener_, EPOLLIN, nullptr);
  }

  void run() {
    std::vector<epoll_event> events(1024);
    for (;;) {
      const int ready = epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), -1);
      for (int i = 0; i < ready; ++i) {
        const epoll_event& event = events[static_cast<std::size_t>(i)];
        auto* connection = static_cast<Connection*>(event.data.ptr);
        if (connection == nullptr) {
          accept_all();
          continue;
        }
        if ((event.events & EPOLLOUT) != 0) write(*connection);
        if ((event.events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) read(*connection);
      }
      for (Connection* connection : planned_) {
        connection->planned = false;
        if (connection->socket >= 0) write(*connection);
      }
      planned_.clear();
      gone_.clear();
    }
  }

 private:
  void watch(int operation, int socket, std::uint32_t what, Connection* connection) const {
    epoll_event event{};
    event.events = what;
    event.data.ptr = connection;
    epoll_ctl(epoll_, operation, socket, &event);
  }

  void accept_all() {
    for (;;) {
      const int socket = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
      if (socket < 0) return;
      const int on = 1;
      setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
      connections_.push_back(std::make_unique<Connection>());
      connections_.back()->socket = socket;
      watch(EPOLL_CTL_ADD, socket, EPOLLIN, connections_.back().get());
    }
  }

  void read(Connection& from) {
    const ssize_t count = recv(from.socket, block_.data(), block_.size(), 0);
    if (count < 0 && errno == EAGAIN) return;
    if (count <= 0) return drop(from);
    std::string_view data = std::string_view(block_).substr(0, static_cast<std::size_t>(count));
    if (!from.greeted) {
      if (data != kHello) return drop(from);
      from.greeted = true;
      return append(from, kWelcome);
    }
    if (!from.in.empty()) data = from.in += data;
    std::size_t used = 0;
    while (data.size() - used >= kHeaderBytes) {
      const std::size_t size = descriptor_bytes(data.data() + used);
      if (data.size() - used < size) break;
      for (const auto& to : connections_) {
        if (to.get() != &from && to->greeted) append(*to, data.substr(used, size));
      }
      used += size;
    }
    from.in = std::string(data.substr(used));
  }

  void append(Connection& to, std::string_view bytes) {
    to.out += bytes;
    if (to.planned || to.waits) return;
    to.planned = true;
    planned_.push_back(&to);
  }

  void write(Connection& to) {
    const ssize_t count = send(to.socket, to.out.data(), to.out.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EAGAIN) return drop(to);
    to.out.erase(0, static_cast<std::size_t>(count < 0 ? 0 : count));
    const bool waits = !to.out.empty();
    if (waits == to.waits) return;
    to.waits = waits;
    watch(EPOLL_CTL_MOD, to.socket, waits ? EPOLLIN | EPOLLOUT : EPOLLIN, &to);
  }

  // The connection itself goes at the end of the turn, in which it may still be spoken of.
  void drop(Connection& connection) {
    close(connection.socket);
    connection.socket = -1;
    for (auto& kept : connections_) {
      if (kept.get() != &connection) continue;
      gone_.push_back(std::move(kept));
      kept = std::move(connections_.back());
      connections_.pop_back();
      return;
    }
  }

  int epoll_ = epoll_create1(EPOLL_CLOEXEC);
  int listener_ = -1;
  std::string block_;
  std::vector<std::unique_ptr<Connection>> connections_;
  std::vector<std::unique_ptr<Connection>> gone_;
  std::vector<Connection*> planned_;
};

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "bare_relay ADDRESS PORT\n");
    return 2;
  }
  try {
    velmora::bench::raise_file_limit();
    velmora::bench::BareRelay relay({argv[1], static_cast<std::uint16_t>(std::atoi(argv[2]))});
    std::printf("bare_relay runs\n");
    std::fflush(stdout);
    relay.run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bare_relay: %s\n", error.what());
    return 1;
  }
}
