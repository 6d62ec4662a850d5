// The other ends of a server's connections, all of one process: opens them, greets, and waits until
// each is welcome. Failures raise std::runtime_error: a load that does not stand measures nothing.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "load/frames.h"

namespace velmora::bench {

struct Endpoint {
  std::string address;
  std::uint16_t port = 0;
};

// "ADDRESS:PORT"
Endpoint parse_endpoint(std::string_view text);
sockaddr_in socket_address(const Endpoint& endpoint);

// The limit on open files, raised as far as it goes.
void raise_file_limit();

// A blocking connection without Nagle's delay; it resets when it is closed, so that its port is
// free at once for the next run.
int dial(const Endpoint& endpoint);
void set_nonblocking(int socket);

// Bytes that must leave; blocks.
void send_all(int socket, std::string_view bytes);

// Greeted connections, non-blocking. 64 at a time wait for their welcome.
std::vector<int> open_peers(const Endpoint& endpoint, std::size_t count, const Frames& frames);

}  // namespace velmora::bench
