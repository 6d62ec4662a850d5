#include "load/peers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace velmora::bench {
namespace {

constexpr std::size_t kAtOnce = 64;
constexpr int kPatienceSeconds = 10;

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

void await_welcome(int socket, const Frames& frames) {
  std::string received;
  while (!frames.welcomed(received)) {
    char block[4096];
    const ssize_t count = recv(socket, block, sizeof block, 0);
    if (count <= 0) fail("no welcome");
    received.append(block, static_cast<std::size_t>(count));
  }
}

}  // namespace

Endpoint parse_endpoint(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) throw std::runtime_error("ADDRESS:PORT is wanted");
  return {std::string(text.substr(0, colon)),
          static_cast<std::uint16_t>(std::stoi(std::string(text.substr(colon + 1))))};
}

sockaddr_in socket_address(const Endpoint& endpoint) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(endpoint.port);
  if (inet_pton(AF_INET, endpoint.address.c_str(), &address.sin_addr) != 1) {
    throw std::runtime_error("not an address: " + endpoint.address);
  }
  return address;
}

void raise_file_limit() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

int dial(const Endpoint& endpoint) {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connection < 0) fail("socket");
  const sockaddr_in address = socket_address(endpoint);
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    fail("connect to " + endpoint.address);
  }
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  const linger reset{1, 0};
  setsockopt(connection, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  const timeval patience{kPatienceSeconds, 0};
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  return connection;
}

void set_nonblocking(int socket) {
  if (fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK) != 0) fail("fcntl");
}

void send_all(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0) fail("send");
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

std::vector<int> open_peers(const Endpoint& endpoint, std::size_t count, const Frames& frames) {
  std::vector<int> peers;
  peers.reserve(count);
  while (peers.size() < count) {
    const std::size_t first = peers.size();
    for (std::size_t i = 0; i < std::min(kAtOnce, count - first); ++i) {
      peers.push_back(dial(endpoint));
      send_all(peers.back(), frames.hello());
    }
    for (std::size_t i = first; i < peers.size(); ++i) {
      await_welcome(peers[i], frames);
      set_nonblocking(peers[i]);
    }
  }
  return peers;
}

}  // namespace velmora::bench
