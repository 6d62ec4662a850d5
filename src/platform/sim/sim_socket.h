// The Socket of a simulated host: a cover over an endpoint that keeps the limits on unsent bytes
// and writes the transcript.
#pragma once

#include <memory>
#include <string>

#include "platform/sim/sim_endpoint.h"

namespace velmora::sim {

class SimNetwork;

class SimSocket : public Socket, private SocketEvents {
 public:
  // Events may be set later (an accepted connection); data waits until then.
  SimSocket(SimNetwork& network, std::shared_ptr<Endpoint> endpoint, SocketEvents* events);
  ~SimSocket() override;
  SimSocket(const SimSocket&) = delete;
  SimSocket& operator=(const SimSocket&) = delete;

  void set_events(SocketEvents* events) override;
  void write(std::string_view data) override { write(data, false); }
  void write_alone(std::string_view data) override { write(data, true); }
  void set_reading(bool reading) override;
  [[nodiscard]] bool connected() const override { return endpoint_->connected(); }
  [[nodiscard]] std::size_t unsent() const override { return endpoint_->unsent(); }
  [[nodiscard]] std::size_t unacknowledged() const override { return endpoint_->unacknowledged(); }
  [[nodiscard]] std::string peer_address() const override { return endpoint_->peer().address; }
  [[nodiscard]] std::uint16_t peer_port() const override { return endpoint_->peer().port; }
  [[nodiscard]] std::uint16_t local_port() const override { return endpoint_->local().port; }

  void record(const char* kind, std::string_view data = {}) const;

 private:
  void on_connect() override;
  void on_connect_failed() override;
  void on_read(std::string_view data) override;
  void on_disconnect() override;
  void write(std::string_view data, bool alone);

  SimNetwork& network_;
  std::uint64_t number_;
  std::shared_ptr<Endpoint> endpoint_;
  SocketEvents* events_;
};

}  // namespace velmora::sim
