#include "town.h"

#include <algorithm>
#include <utility>

namespace velmora::model {
namespace {

constexpr std::int64_t kStep_ms = 100;  // how often everybody considers doing something
constexpr std::size_t kDegree = 4;
constexpr std::size_t kStrangers = 3;
constexpr std::uint16_t kMessagePort = 6346;
constexpr const char* kListeningStranger = "10.9.9.1";
constexpr LocalTime kFoundedAt{2000, 6, 30, 13, 53, 20};

const std::vector<std::string>& vocabulary() {
  static const std::vector<std::string> words{"blue", "river", "Red", "hill", "song", "night",
                                              "a",    "lake",  "*",   "TXT",  "7",    "winter"};
  return words;
}

std::string address_of(std::size_t number) { return "10.0.0." + std::to_string(number); }

}  // namespace

Town::Town(std::uint64_t seed) : chance_(seed), world_(seed) {
  world_.record();
  world_.set_local_time(kFoundedAt);
  found();
  acquaint();
  for (Resident& resident : residents_) move_in(resident);
  world_.run_for(1000);  // the scans of shared files end
  for (std::size_t i = 1; i <= kStrangers; ++i) {
    strangers_.push_back({"10.9.1." + std::to_string(i), nullptr});
  }
  host_strangers();
  sim::NetworkConditions& network = world_.conditions();
  network.latency_us = 20'000;
  network.jitter_us = 60'000;
  network.bandwidth = 20'000;
  network.split_probability = 0.01;
  network.join_probability = 0.02;
  network.reset_probability = 0.0005;
  network.refuse_probability = 0.05;
  network.silent_connect_probability = 0.05;
}

void Town::found() {
  residents_.resize(kResidents);
  for (std::size_t i = 0; i < kResidents; ++i) {
    Resident& resident = residents_[i];
    resident.address = address_of(i + 1);
    resident.host = &world_.add_host(resident.address);
    if (i % 10 == 9) resident.max_in = 1;
    const std::size_t files = chance_.below(4);
    for (std::size_t f = 0; f < files; ++f) {
      const auto size = static_cast<std::uint32_t>(1 + chance_.below(3000));
      const std::string name = std::to_string(f) + " " + words(3) + ".txt";
      resident.files.push_back({name, size});
      resident.host->files().put("/share/" + name, std::string(size, 'x'));
    }
    resident.host->files().make_folder("/share");
  }
}

// A ring, so that nobody is left out, and random friendships.
void Town::acquaint() {
  for (std::size_t i = 0; i < kResidents; ++i) {
    residents_[i].friends.push_back(residents_[(i + 1) % kResidents].address);
  }
  for (std::size_t edges = kResidents * kDegree / 2 - kResidents; edges > 0; --edges) {
    Resident& from = residents_[chance_.below(kResidents)];
    const Resident& to = residents_[chance_.below(kResidents)];
    if (from.address != to.address) from.friends.push_back(to.address);
  }
  residents_[3].friends.emplace_back(kListeningStranger);
  residents_[7].friends.emplace_back(kListeningStranger);
  residents_[7].friends.emplace_back("10.9.9.9");  // nobody there
}

void Town::move_in(Resident& resident) {
  ServentOptions options;
  options.set = {{"ttlMax_config", std::to_string(kTtl)},
                 {"max_in_host", std::to_string(resident.max_in)},
                 {"max_out_host", "20"}};
  options.echo_log = [&resident](const std::string& line) { resident.log.push_back(line); };
  resident.servent = std::make_unique<Servent>(resident.host->platform(), std::move(options));
  resident.servent->start();
  Form& form = resident.servent->form();
  form.upload_config.enter("/share");
  form.scan_config.click();
}

void Town::live(std::int64_t seconds) {
  for (std::int64_t step = 0; step < seconds * 1000 / kStep_ms; ++step) {
    for (Resident& resident : residents_) person(resident);
    for (Stranger& each : strangers_) stranger(each);
    for (sim::RawPeer* guest : guests_) {
      if (guest->connected() && chance_.one_in(40)) talk(*guest);
    }
    world_.run_for(kStep_ms);
  }
}

void Town::person(Resident& resident) {
  Form& form = resident.servent->form();
  PersonAct act{.position = world_.transcript().size(), .time_us = world_.now_us()};
  if (chance_.one_in(40)) form.new_host.enter(chance_.pick(resident.friends));
  if (chance_.one_in(50)) {
    act.position = world_.transcript().size();
    resident.acts.push_back(act);
    form.more_cache.click();
  }
  if (chance_.one_in(120)) {
    act.kind = PersonAct::search;
    act.position = world_.transcript().size();
    act.text = words(chance_.one_in(10) ? 12 : 2);
    if (chance_.one_in(10)) act.text.resize(280, '-');
    resident.acts.push_back(act);
    form.Tsearch.enter(act.text);
  }
  if (form.lHosts.rows() > 0 && chance_.one_in(4000)) {
    act.kind = PersonAct::leave;
    act.position = world_.transcript().size();
    act.row = 1 + chance_.below(form.lHosts.rows());
    resident.acts.push_back(act);
    form.lHosts.activate(act.row);
  }
}

// Connects to anybody, shakes hands, then talks; connects anew when it was thrown out.
void Town::stranger(Stranger& stranger) {
  if (!chance_.one_in(20)) return;
  if (stranger.peer && stranger.peer->connected() && !stranger.peer->closed_by_peer()) {
    talk(*stranger.peer);
    return;
  }
  stranger.peer =
      world_.connect_raw(stranger.address, chance_.pick(residents_).address, kMessagePort);
  stranger.peer->send(chance_.one_in(8) ? "GNUTELLA CONNECT/0.4\r\n\r\n"
                                        : "GNUTELLA CONNECT/0.4\n\n");
}

void Town::host_strangers() {
  world_.listen_raw(kListeningStranger, kMessagePort, [this](sim::RawPeer& guest) {
    guests_.push_back(&guest);
    guest.send("GNUTELLA OK\n\n");
  });
}

void Town::talk(sim::RawPeer& peer) {
  std::string bytes = noise();
  for (std::size_t more = chance_.below(3); more > 0; --more) bytes += noise();
  if (chance_.one_in(10)) bytes.resize(1 + chance_.below(bytes.size()));
  peer.send(bytes);
  if (chance_.one_in(60)) peer.close();
}

std::string Town::noise() {
  switch (chance_.below(16)) {
    case 0:
      return descriptor(0, chance_.one_in(3) ? 5 : 0);
    case 1:
      return descriptor(1, chance_.one_in(4) ? 13 : 14);
    case 2:
      return descriptor(64, chance_.one_in(4) ? 27 : 26);
    case 3:
      return descriptor(128, chance_.below(300));
    case 4:
      return descriptor(129, chance_.below(120));
    case 5:
      return descriptor(static_cast<unsigned>(2 + chance_.below(60)), chance_.below(50));
    case 6: {
      const std::size_t wrong = chance_.one_in(3) ? 0 : 1 + chance_.below(1U << 31);
      return encode({.guid = std::string(16, 'L'), .function = 9, .length = 32000 + wrong});
    }
    case 7:
      return std::string(1 + chance_.below(22), 's');
    case 8:
      return "GET /get/1/nothing HTTP/1.0\n\n";
    case 9:
      return "GNUTELLA CONNECT/0.4\n\n";
    case 10: {
      const Identity who{.address = "10.9.1.1", .ttl = 2, .guid = "a stranger's own", .files = {}};
      return query(who, descriptor(0, 0).substr(0, 16), words(2));
    }
    case 11: {
      Lines unused;
      const Identity who{.address = "10.9.1.1",
                         .ttl = 2,
                         .guid = "a stranger's own",
                         .files = {{"one.txt", 1}, {"two.txt", 2}}};
      return answer(who, std::string(16, 'H'), "txt", unused);
    }
    case 12: {
      std::string burst = descriptor(0, 0);
      if (!chance_.one_in(20)) return burst;
      for (std::size_t more = 500 + chance_.below(200); more > 0; --more) burst += descriptor(0, 0);
      return burst;
    }
    default:
      return descriptor(0, 0);
  }
}

// Any TTL and hops, often ones that let it pass; a new identifier or one that was used before.
std::string Town::descriptor(unsigned function, std::size_t length) {
  Descriptor header{.function = function, .length = length};
  if (!heard_.empty() && chance_.one_in(3)) {
    header.guid = chance_.pick(heard_);
  } else {
    while (header.guid.size() < 16) header.guid += static_cast<char>(1 + chance_.below(255));
    heard_.push_back(header.guid);
  }
  header.ttl = static_cast<unsigned>(chance_.one_in(4) ? chance_.below(256) : 1 + chance_.below(4));
  header.hops = static_cast<unsigned>(chance_.one_in(8) ? chance_.below(256) : chance_.below(3));
  std::string bytes = encode(header);
  while (length-- > 0) bytes += static_cast<char>(chance_.below(256));
  return bytes;
}

std::string Town::words(std::size_t most) {
  std::string text = chance_.pick(vocabulary());
  for (std::size_t more = chance_.below(most); more > 0; --more) {
    text += (chance_.one_in(9) ? "  " : " ") + chance_.pick(vocabulary());
  }
  return text;
}

NetworkModel Town::model_of(const Resident& resident) const {
  NetworkModel model(
      {.identity = {.address = resident.address, .ttl = kTtl, .files = resident.files},
       .max_in = resident.max_in,
       .clock_at_zero_s = kFoundedAt.hour * 3600 + kFoundedAt.minute * 60 + kFoundedAt.second});
  model.replay(world_.transcript(), resident.acts, world_.now_us());
  return model;
}

}  // namespace velmora::model
