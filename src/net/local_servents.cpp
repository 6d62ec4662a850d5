#include "net/local_servents.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr int kLookAgain_ms = 5000;

std::string end_text(const std::string& address, std::uint16_t port) {
  return address + ':' + std::to_string(port);
}

}  // namespace

LocalServents::LocalServents(EventLoop& loop, LocalServices* services, const Form& form,
                             DebugLog& log, MessageConnections& connections, HostCache& cache,
                             const Behaviour& behaviour)
    : services_(services),
      form_(form),
      log_(log),
      connections_(connections),
      cache_(cache),
      behaviour_(behaviour),
      look_again_(loop.make_timer(kLookAgain_ms, [this] { look_again(); })) {}

void LocalServents::update() {
  const std::uint16_t port =
      behaviour_.local_network ? unsigned_port(connections_.local_port()) : std::uint16_t{0};
  look_again_->set_enabled(behaviour_.local_network && services_ != nullptr);
  if (services_ == nullptr || port == announced_) return;
  announced_ = port;
  waiting_.clear();
  if (port == 0) return services_->stop();
  services_->start("Velmora " + end_text(connections_.local_address(), port), port, *this);
}

void LocalServents::stop() {
  look_again_->set_enabled(false);
  waiting_.clear();
  if (services_ != nullptr && std::exchange(announced_, std::uint16_t{0}) != 0) services_->stop();
}

void LocalServents::on_found(const LocalService& service) {
  trap(log_, "local_network: ", [&] {
    if (service.address == connections_.local_address() && service.port == announced_) return;
    Pong known;
    known.address = service.address;
    known.port = to_port(service.port);
    cache_.set_cache_stat(DescriptorHeader{}, known, 0);
    if (speaks_first(service)) return connect_to(service);
    const bool waits = std::any_of(waiting_.begin(), waiting_.end(), [&](const LocalService& one) {
      return one.address == service.address && one.port == service.port;
    });
    if (!waits && waiting_.size() < kMostWaiting) waiting_.push_back(service);
  });
}

// Of two that find each other one waits, or they would be connected twice.
bool LocalServents::speaks_first(const LocalService& other) const {
  return end_text(connections_.local_address(), announced_) < end_text(other.address, other.port);
}

void LocalServents::look_again() {
  update();  // the listening port may be another one
  for (const LocalService& service : std::exchange(waiting_, {})) connect_to(service);
}

bool LocalServents::room() const {
  std::size_t out = 0;
  for (const ConnectionSlot& slot : connections_.connection_slots()) {
    const bool stands = slot.state == kOpening || slot.state == kConnected;
    if (stands && slot.direction == "Out") ++out;
  }
  return static_cast<double>(out) < typed_number(form_.max_out_host.text());
}

// A host that is connected already stays so.
void LocalServents::connect_to(const LocalService& service) {
  if (room()) connections_.connect_out(service.address, to_port(service.port), "?");
}

}  // namespace velmora
