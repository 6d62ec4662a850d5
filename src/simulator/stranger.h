// A peer that is no servent: talks to anybody's two ports and answers whoever connects to it, with
// descriptors good and bad, requests and replies cut anywhere, and with resets, half closes and
// silence. Its address is its own; what it sends follows from its chance.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/sim/sim_chance.h"
#include "platform/sim/sim_world.h"

namespace velmora::simulator {

class Stranger {
 public:
  Stranger(sim::SimWorld& world, std::string address, std::uint64_t seed);

  // Does something to the host of that address, or to one of its connections.
  void act(const std::string& victim);
  void leave();

 private:
  void call(const std::string& victim);
  void talk(sim::RawPeer& peer);
  void answer_download(sim::RawPeer& peer);
  std::string opening();
  std::string request();
  std::string descriptors();
  std::string descriptor();
  std::string hit();
  std::string random_bytes(std::size_t count);

  sim::SimWorld& world_;
  std::string address_;
  sim::Chance chance_;
  std::vector<std::unique_ptr<sim::RawPeer>> calls_;
  std::vector<sim::RawPeer*> guests_;     // owned by the world
  std::vector<sim::RawPeer*> customers_;  // who want a file; owned by the world
  std::vector<std::string> identifiers_;
};

}  // namespace velmora::simulator
