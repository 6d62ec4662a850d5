// Watches the bytes of one servent's connections: a descriptor that it forwards must have come in,
// payload and identifier byte for byte, and what it says of itself must be whole. It reads the wire
// on its own, without the program's decoder.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace velmora::simulator {

class ForwardWitness {
 public:
  void read(std::uint64_t socket, std::string_view data);
  // Returns "" or what is wrong with it.
  std::string written(std::uint64_t socket, std::string_view data);
  void closed(std::uint64_t socket) { connections_.erase(socket); }
  [[nodiscard]] std::uint64_t forwarded() const { return forwarded_; }

 private:
  struct Connection {
    bool talked = false;
    bool descriptors = true;  // not a transfer of a file
    // What it forwards comes from the newest chunk of some connection, or began so far before it as
    // a descriptor may wait for its rest.
    std::string last_bytes;
  };
  std::string one_written(std::string_view descriptor, bool must_be_forwarded);
  [[nodiscard]] bool came_in(std::string_view descriptor) const;

  std::map<std::uint64_t, Connection> connections_;
  std::uint64_t forwarded_ = 0;
};

}  // namespace velmora::simulator
