#include "platform/sim/sim_host.h"

#include <utility>

namespace velmora::sim {

SimHost::SimHost(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

SimHost::~SimHost() = default;

const std::string& SimHost::address() const { return parts_->address; }

Platform SimHost::platform() {
  return {parts_->loop,   parts_->network, parts_->files, parts_->screen, parts_->screen,
          parts_->screen, parts_->control, parts_->dns,   parts_->random, &parts_->local_services};
}

SimLocalServices& SimHost::local_services() { return parts_->local_services; }

SimFiles& SimHost::files() { return parts_->files; }

SimScreen& SimHost::screen() { return parts_->screen; }

SimControl& SimHost::control() { return parts_->control; }

SimDnsClient& SimHost::dns() { return parts_->dns; }

}  // namespace velmora::sim
