#include "platform/sim/sim_host.h"

#include <utility>

namespace velmora::sim {

SimHost::SimHost(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

SimHost::~SimHost() = default;

const std::string& SimHost::address() const { return parts_->address; }

Platform SimHost::platform() {
  Parts& p = *parts_;
  return {p.loop,    p.network, p.files,  p.screen,          p.screen,  p.screen,
          p.control, p.dns,     p.random, &p.local_services, &p.folders};
}

SimLocalServices& SimHost::local_services() { return parts_->local_services; }

SimFiles& SimHost::files() { return parts_->files; }

SimScreen& SimHost::screen() { return parts_->screen; }

SimControl& SimHost::control() { return parts_->control; }

SimDnsClient& SimHost::dns() { return parts_->dns; }

SimFolderWatcher& SimHost::folders() { return parts_->folders; }

}  // namespace velmora::sim
