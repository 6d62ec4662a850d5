#include "platform/sim/sim_raw_peer.h"

#include <utility>

namespace velmora::sim {

SimRawPeer::SimRawPeer(std::shared_ptr<Endpoint> endpoint) : endpoint_(std::move(endpoint)) {
  endpoint_->set_events(this);
}

SimRawPeer::~SimRawPeer() { endpoint_->close(); }

std::string SimRawPeer::take() {
  reads_.clear();
  return std::exchange(received_, {});
}

void SimRawPeer::on_read(std::string_view data) {
  received_ += data;
  reads_.emplace_back(data);
}

}  // namespace velmora::sim
