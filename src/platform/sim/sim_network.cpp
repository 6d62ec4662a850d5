#include "platform/sim/sim_network.h"

#include <utility>

#include "platform/sim/sim_handshake.h"
#include "platform/sim/sim_listening_port.h"
#include "platform/sim/sim_socket.h"

namespace velmora::sim {
namespace {

class SimListener : public Listener {
 public:
  SimListener(SimNetwork& network, std::shared_ptr<ListeningPort> port, ListenerEvents& events)
      : network_(network), port_(std::move(port)), events_(events) {
    port_->on_accept([this](std::shared_ptr<Endpoint> endpoint) { accept(std::move(endpoint)); });
    Internet& internet = network_.internet();
    internet.recorder.add({"listen", internet.scheduler.now_us(), port_->address(),
                           internet.next_socket_number(), "", port_->port(), ""});
  }
  ~SimListener() override { port_->close(); }
  SimListener(const SimListener&) = delete;
  SimListener& operator=(const SimListener&) = delete;

  void set_accepting(bool accepting) override { port_->set_accepting(accepting); }
  [[nodiscard]] std::uint16_t local_port() const override { return port_->port(); }

 private:
  void accept(std::shared_ptr<Endpoint> endpoint) {
    auto socket = std::make_unique<SimSocket>(network_, std::move(endpoint), nullptr);
    socket->record("accepted");
    events_.on_accept(std::move(socket));
  }

  SimNetwork& network_;
  std::shared_ptr<ListeningPort> port_;
  ListenerEvents& events_;
};

}  // namespace

SimNetwork::SimNetwork(Internet& internet, std::string address)
    : internet_(internet), address_(std::move(address)) {}

std::unique_ptr<Listener> SimNetwork::listen(std::uint16_t port, int backlog,
                                             ListenerEvents& events) {
  return std::make_unique<SimListener>(*this, internet_.listen(address_, port, backlog), events);
}

std::unique_ptr<Socket> SimNetwork::connect(const std::string& host, std::uint16_t port,
                                            int timeout_ms, SocketEvents& events) {
  auto endpoint = std::make_shared<Endpoint>(
      internet_, EndpointName{address_, internet_.ephemeral_port(address_)},
      EndpointName{internet_.resolve(host).value_or(host), port});
  auto socket = std::make_unique<SimSocket>(*this, endpoint, &events);
  socket->record("connecting");
  start_handshake(internet_, endpoint, timeout_ms);
  return socket;
}

std::size_t SimNetwork::total_unsent() const {
  std::size_t total = 0;
  for (const SimSocket* socket : sockets_) total += socket->unsent();
  return total;
}

}  // namespace velmora::sim
