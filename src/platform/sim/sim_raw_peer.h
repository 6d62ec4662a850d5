// The bare TCP endpoint that tests talk through; see RawPeer. Bytes sent before the connection
// stands leave when it does; bytes sent after its end vanish.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/sim/sim_endpoint.h"
#include "platform/sim/sim_world.h"

namespace velmora::sim {

class SimRawPeer : public RawPeer, private SocketEvents {
 public:
  explicit SimRawPeer(std::shared_ptr<Endpoint> endpoint);
  ~SimRawPeer() override;
  SimRawPeer(const SimRawPeer&) = delete;
  SimRawPeer& operator=(const SimRawPeer&) = delete;

  void send(std::string_view data) override { endpoint_->send(std::string(data)); }
  void close() override { endpoint_->close(); }
  void end_sending() override { endpoint_->end_sending(); }
  void reset() override { endpoint_->reset(); }
  void set_reading(bool reading) override { endpoint_->set_reading(reading); }
  [[nodiscard]] bool connected() const override { return endpoint_->connected(); }
  [[nodiscard]] bool closed_by_peer() const override { return closed_by_peer_; }
  [[nodiscard]] const std::string& received() const override { return received_; }
  [[nodiscard]] const std::vector<std::string>& reads() const override { return reads_; }
  std::string take() override;
  [[nodiscard]] std::uint16_t local_port() const override { return endpoint_->local().port; }

 private:
  void on_connect() override {}
  void on_connect_failed() override {}
  void on_read(std::string_view data) override;
  void on_disconnect() override { closed_by_peer_ = true; }

  std::shared_ptr<Endpoint> endpoint_;
  bool closed_by_peer_ = false;
  std::string received_;
  std::vector<std::string> reads_;
};

}  // namespace velmora::sim
