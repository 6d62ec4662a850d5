// What one simulated host is made of; for the world that makes it.
#pragma once

#include <string>

#include "platform/sim/sim_dns_client.h"
#include "platform/sim/sim_folder_watcher.h"
#include "platform/sim/sim_local_services.h"
#include "platform/sim/sim_loop.h"
#include "platform/sim/sim_network.h"
#include "platform/sim/sim_random.h"
#include "platform/sim/sim_world.h"

namespace velmora::sim {

struct SimHost::Parts {
  Parts(Internet& internet, const CivilClock& civil, const std::string& host_address)
      : address(host_address),
        loop(internet.scheduler, civil),
        network(internet, host_address),
        control(loop),
        dns(loop),
        random(internet.seed, host_address) {}

  std::string address;
  SimLoop loop;
  SimNetwork network;
  SimFiles files;
  SimScreen screen;
  SimControl control;
  SimDnsClient dns;
  SimLocalServices local_services;
  SimRandom random;
  SimFolderWatcher folders;
};

}  // namespace velmora::sim
