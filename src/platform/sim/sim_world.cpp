#include "platform/sim/sim_world.h"

#include <stdexcept>
#include <utility>

#include "platform/sim/sim_handshake.h"
#include "platform/sim/sim_host.h"
#include "platform/sim/sim_listening_port.h"
#include "platform/sim/sim_raw_peer.h"

namespace velmora::sim {
namespace {

constexpr int kRawBacklog = 1024;

}  // namespace

struct SimWorld::State {
  explicit State(std::uint64_t seed) : internet(scheduler, seed) {}
  // What waits in the queue may own sockets, timers and raw peers of everything else here.
  ~State() { scheduler.clear(); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  bool run(std::int64_t until_us, const std::function<bool()>& done);

  Scheduler scheduler;
  CivilClock civil;
  Internet internet;
  std::map<std::string, std::unique_ptr<SimHost>> hosts;
  std::vector<std::shared_ptr<ListeningPort>> raw_ports;
  std::vector<std::unique_ptr<RawPeer>> raw_peers;
};

bool SimWorld::State::run(std::int64_t until_us, const std::function<bool()>& done) {
  if (scheduler.running()) throw std::logic_error("the world already runs");
  do {
    if (done()) return true;
  } while (scheduler.run_next(until_us));
  scheduler.move_clock_to(until_us);
  return done();
}

SimWorld::SimWorld(std::uint64_t seed) : state_(std::make_unique<State>(seed)) {}

SimWorld::~SimWorld() = default;

SimHost& SimWorld::add_host(const std::string& address) {
  std::unique_ptr<SimHost>& host = state_->hosts[address];
  if (!host) {
    host.reset(
        new SimHost(std::make_unique<SimHost::Parts>(state_->internet, state_->civil, address)));
    state_->internet.addresses.insert(address);
  }
  return *host;
}

NetworkConditions& SimWorld::conditions() { return state_->internet.conditions; }

void SimWorld::add_name(const std::string& name, const std::string& address) {
  state_->internet.names[name] = address;
}

std::unique_ptr<RawPeer> SimWorld::connect_raw(const std::string& from, const std::string& to,
                                               std::uint16_t port) {
  Internet& internet = state_->internet;
  auto endpoint =
      std::make_shared<Endpoint>(internet, EndpointName{from, internet.ephemeral_port(from)},
                                 EndpointName{internet.resolve(to).value_or(to), port});
  auto peer = std::make_unique<SimRawPeer>(endpoint);
  start_handshake(internet, endpoint, 0);
  return peer;
}

void SimWorld::listen_raw(const std::string& address, std::uint16_t port,
                          std::function<void(RawPeer&)> on_peer) {
  const auto listening = state_->internet.listen(address, port, kRawBacklog);
  listening->on_accept(
      [state = state_.get(), on_peer = std::move(on_peer)](std::shared_ptr<Endpoint> endpoint) {
        auto peer = std::make_unique<SimRawPeer>(std::move(endpoint));
        RawPeer& reference = *peer;
        state->raw_peers.push_back(std::move(peer));
        on_peer(reference);
      });
  state_->raw_ports.push_back(listening);
}

void SimWorld::run_for(std::int64_t ms) {
  state_->run(now_us() + ms * 1000, [] { return false; });
}

bool SimWorld::run_until(const std::function<bool()>& condition, std::int64_t most_ms) {
  return state_->run(now_us() + most_ms * 1000, condition);
}

std::int64_t SimWorld::now_ms() const { return now_us() / 1000; }

std::int64_t SimWorld::now_us() const { return state_->scheduler.now_us(); }

void SimWorld::set_local_time(LocalTime now) { state_->civil.set(now, now_us()); }

void SimWorld::record() { state_->internet.recorder.start(); }

const std::vector<TranscriptEntry>& SimWorld::transcript() const {
  return state_->internet.recorder.entries();
}

std::string SimWorld::trace() const { return state_->internet.recorder.text(); }

}  // namespace velmora::sim
