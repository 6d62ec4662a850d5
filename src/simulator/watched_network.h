// The network of a watched platform.
#pragma once

#include "simulator/watched_platform.h"

namespace velmora::simulator {

class WatchedNetwork : public Network {
 public:
  explicit WatchedNetwork(Seam& seam) : seam_(seam) {}
  std::unique_ptr<Listener> listen(std::uint16_t port, int backlog,
                                   ListenerEvents& events) override;
  std::unique_ptr<Socket> connect(const std::string& host, std::uint16_t port, int timeout_ms,
                                  SocketEvents& events) override;
  [[nodiscard]] std::string local_address() const override {
    return seam_.machine.network.local_address();
  }

 private:
  Seam& seam_;
};

}  // namespace velmora::simulator
