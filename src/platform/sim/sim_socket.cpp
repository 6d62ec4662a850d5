#include "platform/sim/sim_socket.h"

#include <fmt/format.h>

#include <utility>

#include "platform/error.h"
#include "platform/sim/sim_network.h"

namespace velmora::sim {

SimSocket::SimSocket(SimNetwork& network, std::shared_ptr<Endpoint> endpoint, SocketEvents* events)
    : network_(network),
      number_(network.internet().next_socket_number()),
      endpoint_(std::move(endpoint)),
      events_(nullptr) {
  network_.add_socket(this);
  SimSocket::set_events(events);
}

SimSocket::~SimSocket() {
  if (!endpoint_->over()) record("closed");
  endpoint_->close();
  network_.remove_socket(this);
}

void SimSocket::set_events(SocketEvents* events) {
  events_ = events;
  endpoint_->set_events(events == nullptr ? nullptr : this);
}

void SimSocket::set_reading(bool reading) {
  if (reading == endpoint_->reading()) return;
  record(reading ? "reading on" : "reading off");
  endpoint_->set_reading(reading);
}

void SimSocket::write(std::string_view data, bool alone) {
  if (!connected()) throw PlatformError(Errc::not_connected);
  if (unsent() + data.size() > kMaxUnsentPerSocket ||
      network_.total_unsent() + data.size() > kMaxUnsentTotal) {
    throw PlatformError(Errc::no_buffer_space);
  }
  record("write", data);
  endpoint_->write(data, alone);
}

// Each of these may destroy the socket in its last call.
void SimSocket::on_connect() {
  record("connected");
  events_->on_connect();
}

void SimSocket::on_connect_failed() {
  record("failed");
  events_->on_connect_failed();
}

void SimSocket::on_read(std::string_view data) {
  record("read", data);
  events_->on_read(data);
}

void SimSocket::on_disconnect() {
  record("disconnected");
  events_->on_disconnect();
}

void SimSocket::record(const char* kind, std::string_view data) const {
  Internet& internet = network_.internet();
  internet.recorder.add({kind, internet.scheduler.now_us(), endpoint_->local().address, number_,
                         fmt::format("{}:{}", endpoint_->peer().address, endpoint_->peer().port),
                         endpoint_->local().port, std::string(data)});
}

}  // namespace velmora::sim
