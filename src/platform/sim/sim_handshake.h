// How a simulated TCP connection comes about: the request, the answer and its confirmation travel
// one latency each, so that the connecting end stands after one round trip and the listening end
// accepts half a round trip later.
#pragma once

#include <memory>

#include "platform/sim/sim_endpoint.h"

namespace velmora::sim {

// Connects the endpoint to the peer that it names. Sooner or later it is established or fails,
// never inside this call. A time-out of 0 leaves it to the kernel's own.
void start_handshake(Internet& internet, const std::shared_ptr<Endpoint>& client, int timeout_ms);

}  // namespace velmora::sim
