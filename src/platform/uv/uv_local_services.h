// DNS-SD through Avahi, over the system's message bus: announces one service and resolves those
// that others announce. It asks Avahi for everything and never starts it; while Avahi or the bus is
// not there it looks again once a minute.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/local_services.h"
#include "platform/uv/uv_bus.h"

namespace velmora::uv {

class UvLocalServices : public LocalServices {
 public:
  // So many found services are asked for their address at a time; more than that are not looked at.
  static constexpr int kMostResolving = 64;

  explicit UvLocalServices(UvLoop& loop);

  void start(const std::string& name, std::uint16_t port, LocalServicesEvents& events) override;
  void stop() override;

 private:
  void begin();
  void end();
  void ask_for_group();
  [[nodiscard]] bool failed(sd_bus_message* reply) const;
  void announce(const char* group);
  void browse();
  void found(sd_bus_message* item);
  void resolved(sd_bus_message* reply);

  UvLoop& loop_;
  std::string name_;
  std::uint16_t port_ = 0;
  LocalServicesEvents* events_ = nullptr;  // null: stopped
  int resolving_ = 0;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);  // posted continuations look here
  std::unique_ptr<UvBus> bus_;
  std::unique_ptr<Timer> look_again_;
};

}  // namespace velmora::uv
