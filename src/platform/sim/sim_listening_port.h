// A port that a simulated host listens on, with its backlog of connections that nobody has accepted
// yet. The listener that holds it closes it; the connections in the backlog are reset then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "platform/sim/sim_endpoint.h"

namespace velmora::sim {

class ListeningPort : public std::enable_shared_from_this<ListeningPort> {
 public:
  using Accept = std::function<void(std::shared_ptr<Endpoint>)>;

  ListeningPort(Internet& internet, std::string address, std::uint16_t port, int backlog);

  void on_accept(Accept accept) { accept_ = std::move(accept); }
  void set_accepting(bool accepting);
  void close();
  [[nodiscard]] bool closed() const { return closed_; }
  [[nodiscard]] const std::string& address() const { return address_; }
  [[nodiscard]] std::uint16_t port() const { return port_; }

  // For the handshake: a connection is half open until it is admitted or given up.
  [[nodiscard]] bool full() const;
  void half_opened() { ++half_open_; }
  void given_up() { --half_open_; }
  void admit(std::shared_ptr<Endpoint> connection);

 private:
  void accept_one();

  Internet& internet_;
  std::string address_;
  std::uint16_t port_;
  std::size_t backlog_;
  Accept accept_;
  bool accepting_ = true;
  bool closed_ = false;
  std::size_t half_open_ = 0;
  std::deque<std::shared_ptr<Endpoint>> waiting_;
};

}  // namespace velmora::sim
