// What the engine asks of the local network: to be found there, and to find the servents that let
// themselves be found (DNS-SD, service type "_gnutella._tcp"). It tells where they are and connects
// nobody. A machine without such a service finds none, and that is no error.
#pragma once

#include <cstdint>
#include <string>

namespace velmora {

struct LocalService {
  std::string address;  // dotted
  std::uint16_t port = 0;
};

class LocalServicesEvents {
 public:
  virtual ~LocalServicesEvents() = default;
  // Comes again when a service is announced again; never for one's own.
  virtual void on_found(const LocalService& service) = 0;
};

class LocalServices {
 public:
  virtual ~LocalServices() = default;
  // Announces the port under the name and tells of others from here on, until stop(). Whoever runs
  // already starts anew. Raises nothing; what cannot be reached is tried again later.
  virtual void start(const std::string& name, std::uint16_t port, LocalServicesEvents& events) = 0;
  virtual void stop() = 0;
};

}  // namespace velmora
