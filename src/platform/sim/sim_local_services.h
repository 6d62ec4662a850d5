// A local network by script: a test sees what is announced and says what is found.
#pragma once

#include <string>

#include "platform/local_services.h"

namespace velmora::sim {

class SimLocalServices : public LocalServices {
 public:
  void start(const std::string& name, std::uint16_t port, LocalServicesEvents& events) override {
    name_ = name;
    port_ = port;
    events_ = &events;
  }
  void stop() override {
    port_ = 0;
    events_ = nullptr;
  }

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::uint16_t port() const { return port_; }  // 0: nothing is announced
  void find(const LocalService& service) {
    if (events_ != nullptr) events_->on_found(service);
  }

 private:
  std::string name_;
  std::uint16_t port_ = 0;
  LocalServicesEvents* events_ = nullptr;
};

}  // namespace velmora::sim
