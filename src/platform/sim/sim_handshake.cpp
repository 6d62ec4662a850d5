#include "platform/sim/sim_handshake.h"

#include <algorithm>
#include <cstdint>

#include "platform/sim/sim_listening_port.h"

namespace velmora::sim {
namespace {

using EndpointPtr = std::shared_ptr<Endpoint>;

constexpr std::int64_t kKernelTimeoutUs = 127'000'000;
constexpr std::int64_t kFirstRetryUs = 1'000'000;  // doubled each time

void confirmation_came(Internet& internet, const EndpointPtr& client, const EndpointPtr& server,
                       const std::weak_ptr<ListeningPort>& weak_port) {
  const auto port = weak_port.lock();
  if (!port || port->closed()) {
    internet.scheduler.at(server->arrival(0), [client] { client->reset_came(); });
    return;
  }
  server->establish();
  port->admit(server);
}

void answer_came(Internet& internet, const EndpointPtr& client, const EndpointPtr& server,
                 const std::weak_ptr<ListeningPort>& weak_port) {
  if (!client->connecting()) {
    if (const auto port = weak_port.lock()) port->given_up();
    return;
  }
  // Sent before on_connect, so that whatever is written there comes behind it.
  internet.scheduler.at(client->arrival(0), [&internet, client, server, weak_port] {
    confirmation_came(internet, client, server, weak_port);
  });
  client->establish();
}

void send_request(Internet& internet, const EndpointPtr& client, std::int64_t retry_us);

void request_came(Internet& internet, const EndpointPtr& client, bool refused,
                  std::int64_t retry_us) {
  if (!client->connecting() || !internet.addresses.contains(client->peer().address)) return;
  const auto server = std::make_shared<Endpoint>(internet, client->peer(), client->local());
  const auto port = internet.listening(client->peer().address, client->peer().port);
  if (refused || !port) {
    internet.scheduler.at(server->arrival(0), [client] { client->fail(); });
    return;
  }
  if (port->full()) {  // a kernel drops the request then, and the other asks again
    internet.scheduler.after(
        retry_us, [&internet, client, retry_us] { send_request(internet, client, 2 * retry_us); });
    return;
  }
  port->half_opened();
  client->set_peer(server);
  server->set_peer(client);
  internet.scheduler.at(server->arrival(0),
                        [&internet, client, server, weak_port = std::weak_ptr(port)] {
                          answer_came(internet, client, server, weak_port);
                        });
}

void send_request(Internet& internet, const EndpointPtr& client, std::int64_t retry_us) {
  if (!client->connecting()) return;
  const NetworkConditions& conditions = internet.conditions;
  if (internet.chance.happens(conditions.silent_connect_probability)) return;
  const bool refused = internet.chance.happens(conditions.refuse_probability);
  internet.scheduler.at(client->arrival(0), [&internet, client, refused, retry_us] {
    request_came(internet, client, refused, retry_us);
  });
}

}  // namespace

void start_handshake(Internet& internet, const EndpointPtr& client, int timeout_ms) {
  if (!internet.resolve(client->peer().address) || client->peer().port == 0) {
    internet.scheduler.next_turn([client] { client->fail(); });
    return;
  }
  const std::int64_t timeout_us =
      timeout_ms > 0 ? std::int64_t{timeout_ms} * 1000 : kKernelTimeoutUs;
  internet.scheduler.after(std::min(timeout_us, kKernelTimeoutUs), [client] { client->fail(); });
  send_request(internet, client, kFirstRetryUs);
}

}  // namespace velmora::sim
