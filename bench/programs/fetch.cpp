// fetch: reads a file from an upload port or a web server and throws it away.
//
//   fetch --to ADDRESS:PORT --path PATH [--bytes N]
//   fetch --to ADDRESS:PORT --path PATH --stopped N --server PID
//
// The first reads to the end, or N bytes behind the header; one line of JSON tells how long that
// took from the request and from the first byte of the file. The second asks N times and reads
// nothing; it tells by how much the server grew.
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <limits>
#include <stdexcept>

#include "load/accounts.h"
#include "load/options.h"
#include "load/peers.h"

namespace velmora::bench {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

std::string request(const Options& options) {
  return "GET " + options.text("path") + " HTTP/1.0\r\nUser-Agent: fetch\r\n\r\n";
}

// Reads on until the empty line; what came behind it is returned.
std::size_t read_header(int socket, std::string& block) {
  std::string header;
  for (;;) {
    const ssize_t count = recv(socket, block.data(), 4096, 0);
    if (count <= 0) throw std::runtime_error("no header");
    header.append(block, 0, static_cast<std::size_t>(count));
    const std::size_t end = header.find("\r\n\r\n");
    if (end == std::string::npos) continue;
    if (!header.starts_with("HTTP") || header.find(" 200 OK") > 12) {
      throw std::runtime_error("not served: " + header.substr(0, 60));
    }
    return header.size() - end - 4;
  }
}

int read_file(const Options& options) {
  const std::uint64_t wanted = options.number("bytes", std::numeric_limits<std::uint64_t>::max());
  std::string block(kBlock, '\0');
  const int socket = dial(parse_endpoint(options.text("to")));
  const std::uint64_t start = now_ns();
  send_all(socket, request(options));
  std::uint64_t bytes = read_header(socket, block);
  std::uint64_t first = now_ns();
  std::uint64_t last = first;
  while (bytes < wanted) {
    const ssize_t count = recv(socket, block.data(), block.size(), 0);
    if (count < 0) throw std::runtime_error("the connection was lost");
    last = now_ns();
    if (count == 0) break;
    if (bytes == 0) first = last;
    bytes += static_cast<std::uint64_t>(count);
  }
  fmt::print("{{\"bytes\": {}, \"seconds\": {:.6f}, \"body_seconds\": {:.6f}}}\n", bytes,
             static_cast<double>(last - start) / 1e9, static_cast<double>(last - first) / 1e9);
  return 0;
}

int stop_reading(const Options& options) {
  const auto server = static_cast<pid_t>(options.number("server"));
  const std::uint64_t before = resident_kib(server);
  const std::uint64_t readers = options.number("stopped");
  for (std::uint64_t i = 0; i < readers; ++i) {
    send_all(dial(parse_endpoint(options.text("to"))), request(options));
  }
  sleep(2);
  const std::uint64_t after = resident_kib(server);
  fmt::print(
      "{{\"kib_each\": {:.1f}}}\n",
      (static_cast<double>(after) - static_cast<double>(before)) / static_cast<double>(readers));
  return 0;
}

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  try {
    const velmora::bench::Options options(argc, argv);
    return options.number("stopped", 0) > 0 ? velmora::bench::stop_reading(options)
                                            : velmora::bench::read_file(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fetch: %s\n", error.what());
    return 2;
  }
}
