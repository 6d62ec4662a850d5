#include "simulator/stranger.h"

#include <fmt/format.h>

#include <array>
#include <utility>

namespace velmora::simulator {
namespace {

constexpr std::uint16_t kMessagePort = 6346;
constexpr std::uint16_t kUploadPort = 6345;
constexpr std::size_t kMostCalls = 4;
constexpr std::size_t kMostGuests = 8;

std::string little_endian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 255U);
  return text;
}

}  // namespace

Stranger::Stranger(sim::SimWorld& world, std::string address, std::uint64_t seed)
    : world_(world), address_(std::move(address)), chance_(seed) {
  world_.add_host(address_);
  world_.listen_raw(address_, kMessagePort, [this](sim::RawPeer& guest) {
    guest.send("GNUTELLA OK\n\n");
    if (guests_.size() < kMostGuests) guests_.push_back(&guest);
  });
  world_.listen_raw(address_, kUploadPort, [this](sim::RawPeer& customer) {
    if (customers_.size() < kMostGuests) customers_.push_back(&customer);
    answer_download(customer);
  });
}

void Stranger::act(const std::string& victim) {
  const std::size_t what = chance_.below(4);
  if (what == 0 || calls_.empty()) return call(victim);
  if (what == 1 && !customers_.empty()) {
    return answer_download(*customers_[chance_.below(customers_.size())]);
  }
  if (what == 2 && !guests_.empty()) return talk(*guests_[chance_.below(guests_.size())]);
  talk(*calls_[chance_.below(calls_.size())]);
}

void Stranger::leave() {
  calls_.clear();
  for (sim::RawPeer* guest : guests_) guest->reset();
  for (sim::RawPeer* customer : customers_) customer->reset();
}

void Stranger::call(const std::string& victim) {
  if (calls_.size() >= kMostCalls) calls_.erase(calls_.begin());
  const bool messages = chance_.below(3) != 0;
  calls_.push_back(world_.connect_raw(address_, victim, messages ? kMessagePort : kUploadPort));
  calls_.back()->send(messages ? opening() : request());
}

void Stranger::talk(sim::RawPeer& peer) {
  switch (chance_.below(20)) {
    case 0:
      return peer.close();
    case 1:
      return peer.reset();
    case 2:
      return peer.end_sending();
    case 3:
      return peer.set_reading(chance_.below(2) == 0);
    case 4:
      return peer.send(request());
    case 5:
      return peer.send(opening());
    default:
      peer.send(descriptors());
      peer.take();
  }
}

void Stranger::answer_download(sim::RawPeer& peer) {
  switch (chance_.below(10)) {
    case 0:
      return peer.close();
    case 1:
      return peer.reset();
    case 2:
      return;
    case 3:
      return peer.send("VelMora-Stop: 3\r\nbye");
    case 4:
      return peer.send(random_bytes(1 + chance_.below(200)));
    case 5:
    case 6:
      return peer.send(random_bytes(1 + chance_.below(3000)));
    default: {
      static constexpr std::array<const char*, 8> kLengths = {"100",  "2000", "0", "-1",
                                                              "1e30", "x",    "",  "2000"};
      peer.send(
          fmt::format("HTTP 200 OK\r\nServer: "
                      "S\r\nContent-type:application/binary\r\nContent-length: {}\r\n\r\n",
                      kLengths.at(chance_.below(kLengths.size()))));
    }
  }
}

std::string Stranger::opening() {
  static constexpr std::array<const char*, 8> kOpenings = {
      "GNUTELLA CONNECT/0.4\n\n",     "GNUTELLA CONNECT/0.4\n\n",
      "GNUTELLA CONNECT/0.4\n\n",     "GNUTELLA OK\n\n",
      "GNUTELLA CONNECT/0.4\r\n\r\n", "GNUTELLA CONNECT/0.6\r\n\r\n",
      "GET / HTTP/1.0\r\n\r\n",       "x"};
  return kOpenings.at(chance_.below(kOpenings.size()));
}

std::string Stranger::request() {
  static constexpr std::array<const char*, 7> kNumbers = {"1", "2", "-1", "1.5", "1e9", "", "0"};
  std::string text = fmt::format(
      "GET /get/{}/blue river {} of {}.txt HTTP:/1.0\r\nUser-Agent: {}\r\nRange: "
      "bytes={}-9\r\n\r\n",
      kNumbers.at(chance_.below(kNumbers.size())), 1 + chance_.below(4), 1 + chance_.below(5),
      chance_.below(2) == 0 ? "VelMora 0.1" : "S", chance_.below(100));
  if (chance_.below(4) == 0) text.resize(chance_.below(text.size()));
  return text;
}

std::string Stranger::descriptors() {
  std::string bytes;
  const std::size_t count = chance_.below(30) == 0 ? 100 + chance_.below(100) : chance_.below(4);
  for (std::size_t i = 0; i <= count; ++i) bytes += descriptor();
  if (chance_.below(5) == 0) bytes.resize(1 + chance_.below(bytes.size()));
  if (chance_.below(12) == 0) bytes += random_bytes(chance_.below(60));
  return bytes;
}

std::string Stranger::descriptor() {
  static constexpr std::array<unsigned char, 9> kFunctions = {0, 0, 0, 1, 1, 64, 128, 129, 7};
  std::string guid;
  if (!identifiers_.empty() && chance_.below(2) == 0) {
    guid = identifiers_[chance_.below(identifiers_.size())];
  } else {
    guid = chance_.below(20) == 0 ? std::string(16, '\0') : random_bytes(16);
    if (identifiers_.size() < 50) identifiers_.push_back(guid);
  }
  const unsigned char function = kFunctions.at(chance_.below(kFunctions.size()));
  std::string payload;
  if (function == 1) payload = little_endian(kMessagePort, 2) + random_bytes(12);
  if (function == 64) payload = random_bytes(26);
  if (function == 128) payload = little_endian(0, 2) + "blue" + '\0';
  if (function == 129) payload = hit();
  if (function == 7 || chance_.below(10) == 0) payload = random_bytes(chance_.below(80));
  std::uint64_t length = payload.size();
  if (chance_.below(12) == 0) length = chance_.below(2) == 0 ? chance_.below(40) : 40'000;
  const auto ttl = static_cast<char>(chance_.below(8) == 0 ? chance_.below(256) : 3);
  const auto hops = static_cast<char>(chance_.below(8) == 0 ? chance_.below(256) : 0);
  return guid + static_cast<char>(function) + ttl + hops + little_endian(length, 4) + payload;
}

// Files that this stranger offers on its own upload port, under names of its choice.
std::string Stranger::hit() {
  static constexpr std::array<const char*, 6> kNames = {
      "bait.mp3", "../../.bashrc", "a\\b.txt", ".profile", "..", "bait\r\nx.txt"};
  const std::size_t count = chance_.below(4);
  std::string payload =
      little_endian(chance_.below(10) == 0 ? 255 : count, 1) + little_endian(kUploadPort, 2);
  int octet = 0;
  std::string dotted = address_ + ".";
  for (const char c : dotted) {
    if (c != '.') {
      octet = octet * 10 + (c - '0');
      continue;
    }
    payload += static_cast<char>(octet);
    octet = 0;
  }
  payload += little_endian(28, 4);
  for (std::size_t i = 0; i < count; ++i) {
    payload += little_endian(1 + chance_.below(3), 4) + little_endian(2000, 4);
    payload += kNames.at(chance_.below(kNames.size()));
    payload += std::string(2, '\0');
  }
  return payload + random_bytes(16);
}

std::string Stranger::random_bytes(std::size_t count) {
  std::string bytes(count, '\0');
  for (char& byte : bytes) byte = static_cast<char>(chance_.below(256));
  return bytes;
}

}  // namespace velmora::simulator
