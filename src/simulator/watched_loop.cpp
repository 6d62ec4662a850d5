#include "simulator/watched_loop.h"

#include <utility>

namespace velmora::simulator {
namespace {

class WatchedTimer : public Timer {
 public:
  WatchedTimer(Seam& seam, std::unique_ptr<Timer> timer) : seam_(seam), timer_(std::move(timer)) {
    ++seam_.held.timers;
  }
  ~WatchedTimer() override {
    const InMachine side;
    timer_.reset();
    --seam_.held.timers;
  }
  WatchedTimer(const WatchedTimer&) = delete;
  WatchedTimer& operator=(const WatchedTimer&) = delete;

  void set_interval(int interval_ms) override {
    const InMachine side;
    timer_->set_interval(interval_ms);
  }
  [[nodiscard]] int interval() const override { return timer_->interval(); }
  void set_enabled(bool enabled) override {
    const InMachine side;
    timer_->set_enabled(enabled);
  }
  [[nodiscard]] bool enabled() const override { return timer_->enabled(); }

 private:
  Seam& seam_;
  std::unique_ptr<Timer> timer_;
};

class WatchedLookup : public DnsRequest {
 public:
  WatchedLookup(Seam& seam, std::unique_ptr<DnsRequest> request)
      : seam_(seam), request_(std::move(request)) {
    ++seam_.held.lookups;
  }
  ~WatchedLookup() override {
    const InMachine side;
    request_.reset();
    --seam_.held.lookups;
  }
  WatchedLookup(const WatchedLookup&) = delete;
  WatchedLookup& operator=(const WatchedLookup&) = delete;

 private:
  Seam& seam_;
  std::unique_ptr<DnsRequest> request_;
};

}  // namespace

std::unique_ptr<Timer> WatchedLoop::make_timer(int interval_ms, std::function<void()> on_tick) {
  machine_needs_memory();
  const InMachine side;
  return std::make_unique<WatchedTimer>(
      seam_, seam_.machine.loop.make_timer(interval_ms, [&seam = seam_, tick = std::move(on_tick)] {
        if (!seam.strikes(Plant::tick)) seam.enter(tick);
      }));
}

void WatchedLoop::post(std::function<void()> continuation) {
  machine_needs_memory();
  const InMachine side;
  seam_.machine.loop.post([&seam = seam_, go_on = std::move(continuation)] { seam.enter(go_on); });
}

std::unique_ptr<DnsRequest> WatchedDns::look_up(const std::string& server,
                                                const std::string& address, OnAnswer on_answer) {
  machine_needs_memory();
  const InMachine side;
  return std::make_unique<WatchedLookup>(
      seam_,
      seam_.machine.dns.look_up(
          server, address, [&seam = seam_, tell = std::move(on_answer)](const DnsAnswer& answer) {
            seam.enter([&] { tell(answer); });
          }));
}

void WatchedControl::open(const std::string& name, ControlChannelEvents& events) {
  machine_needs_memory();
  const InMachine side;
  seam_.machine.control.open(name, *this);
  events_ = &events;
  ++seam_.held.channels;
}

void WatchedControl::send_line(std::uint64_t client, std::string_view line) {
  machine_needs_memory();
  const InMachine side;
  seam_.machine.control.send_line(client, line);
}

void WatchedControl::close() {
  const InMachine side;
  seam_.machine.control.close();
  events_ = nullptr;
  --seam_.held.channels;
}

void WatchedControl::on_client_line(std::uint64_t client, std::string_view line) {
  seam_.enter([&] { events_->on_client_line(client, line); });
}

void WatchedControl::on_client_gone(std::uint64_t client) {
  seam_.enter([&] { events_->on_client_gone(client); });
}

}  // namespace velmora::simulator
