// The Socket that the engine holds: letting go of it leaves the orderly end to the connection.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <utility>

#include "platform/network.h"
#include "platform/uv/uv_connection.h"

namespace velmora::uv {

class UvSocket : public Socket {
 public:
  explicit UvSocket(std::shared_ptr<UvConnection> connection)
      : connection_(std::move(connection)) {}
  ~UvSocket() override { connection_->close(); }
  UvSocket(const UvSocket&) = delete;
  UvSocket& operator=(const UvSocket&) = delete;

  void set_events(SocketEvents* events) override { connection_->set_events(events); }
  void write(std::string_view data) override { connection_->write(data, false); }
  void write_run(std::string_view data, std::span<const std::uint32_t> ends) override {
    connection_->write_run(data, ends);
  }
  void write_alone(std::string_view data) override { connection_->write(data, true); }
  void set_reading(bool reading) override { connection_->set_reading(reading); }
  [[nodiscard]] bool connected() const override { return connection_->connected(); }
  [[nodiscard]] std::size_t unsent() const override { return connection_->unsent(); }
  [[nodiscard]] std::size_t unacknowledged() const override {
    return connection_->unacknowledged();
  }
  [[nodiscard]] std::string peer_address() const override { return connection_->peer_address(); }
  [[nodiscard]] std::uint16_t peer_port() const override { return connection_->peer_port(); }
  [[nodiscard]] std::uint16_t local_port() const override { return connection_->local_port(); }

 private:
  std::shared_ptr<UvConnection> connection_;
};

}  // namespace velmora::uv
