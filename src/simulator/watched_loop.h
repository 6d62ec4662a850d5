// The event loop, DNS client and control channel of a watched platform.
#pragma once

#include "simulator/watched_platform.h"

namespace velmora::simulator {

class WatchedLoop : public EventLoop {
 public:
  explicit WatchedLoop(Seam& seam) : seam_(seam) {}
  std::unique_ptr<Timer> make_timer(int interval_ms, std::function<void()> on_tick) override;
  void post(std::function<void()> continuation) override;
  [[nodiscard]] std::int64_t now_ms() const override { return seam_.machine.loop.now_ms(); }
  [[nodiscard]] LocalTime local_time() const override { return seam_.machine.loop.local_time(); }

 private:
  Seam& seam_;
};

class WatchedDns : public DnsClient {
 public:
  explicit WatchedDns(Seam& seam) : seam_(seam) {}
  std::unique_ptr<DnsRequest> look_up(const std::string& server, const std::string& address,
                                      OnAnswer on_answer) override;

 private:
  Seam& seam_;
};

class WatchedControl : public ControlChannel, private ControlChannelEvents {
 public:
  explicit WatchedControl(Seam& seam) : seam_(seam) {}
  void open(const std::string& name, ControlChannelEvents& events) override;
  void send_line(std::uint64_t client, std::string_view line) override;
  void close() override;

 private:
  void on_client_line(std::uint64_t client, std::string_view line) override;
  void on_client_gone(std::uint64_t client) override;

  Seam& seam_;
  ControlChannelEvents* events_ = nullptr;
};

}  // namespace velmora::simulator
