// The Network of one simulated host.
#pragma once

#include <set>
#include <string>

#include "platform/network.h"
#include "platform/sim/sim_internet.h"

namespace velmora::sim {

class SimSocket;

class SimNetwork : public Network {
 public:
  SimNetwork(Internet& internet, std::string address);

  std::unique_ptr<Listener> listen(std::uint16_t port, int backlog,
                                   ListenerEvents& events) override;
  std::unique_ptr<Socket> connect(const std::string& host, std::uint16_t port, int timeout_ms,
                                  SocketEvents& events) override;

  [[nodiscard]] std::string local_address() const override { return address_; }

  // For its sockets.
  [[nodiscard]] Internet& internet() const { return internet_; }
  void add_socket(const SimSocket* socket) { sockets_.insert(socket); }
  void remove_socket(const SimSocket* socket) { sockets_.erase(socket); }
  [[nodiscard]] std::size_t total_unsent() const;

 private:
  Internet& internet_;
  std::string address_;
  std::set<const SimSocket*> sockets_;
};

}  // namespace velmora::sim
