// What the tests of the real platform share: a loop with a deadline, sockets that record what
// happens to them. Everything stays on loopback.
#pragma once

#include <sys/resource.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/uv/uv_loop.h"
#include "platform/uv/uv_network.h"
#include "support/doubles.h"
#include "support/temporary_folder.h"

namespace velmora::uv {

inline constexpr int kDeadlineMs = 20'000;  // reached only by a test that fails

// Lowers a limit of the process while it lives.
class ResourceLimit {
 public:
  ResourceLimit(__rlimit_resource_t what, rlim_t most) : what_(what) {
    getrlimit(what_, &before_);
    rlimit lowered = before_;
    lowered.rlim_cur = most;
    setrlimit(what_, &lowered);
  }
  ~ResourceLimit() { setrlimit(what_, &before_); }
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;

 private:
  __rlimit_resource_t what_;
  rlimit before_{};
};

// Runs the loop until the condition holds; it is looked at every millisecond.
inline bool run_until(UvLoop& loop, const std::function<bool()>& done) {
  const auto look = loop.make_timer(1, [] {});
  look->set_enabled(true);
  return loop.run_until(done, kDeadlineMs);
}

inline void run_turns(UvLoop& loop, std::uint64_t turns) {
  const std::uint64_t last = loop.turn() + turns;
  run_until(loop, [&] { return loop.turn() >= last; });
}

// One end of a connection that records its events.
class End : public SocketEvents {
 public:
  void hold(std::unique_ptr<Socket> held) {
    socket = std::move(held);
    socket->set_events(this);
  }
  [[nodiscard]] std::string received() const {
    std::string all;
    for (const std::string& read : reads) all += read;
    return all;
  }

  std::unique_ptr<Socket> socket;
  std::vector<std::string> reads;
  int connects = 0;
  int failures = 0;
  int disconnects = 0;
  std::function<void()> after_read;
  std::function<std::size_t(std::string_view)> lacking;

 private:
  void on_connect() override { ++connects; }
  void on_connect_failed() override { ++failures; }
  void on_read(std::string_view data) override {
    reads.emplace_back(data);
    if (after_read) after_read();
  }
  void on_disconnect() override { ++disconnects; }
  [[nodiscard]] std::size_t lacks(std::string_view queued) const override {
    return lacking ? lacking(queued) : 0;
  }
};

class Port : public ListenerEvents {
 public:
  explicit Port(UvNetwork& network, int backlog = 16)
      : address(network.local_address()), listener(network.listen(0, backlog, *this)) {}
  [[nodiscard]] std::uint16_t number() const { return listener->local_port(); }

  const std::string address;
  std::vector<std::unique_ptr<Socket>> accepted;
  std::function<void()> after_accept;
  std::unique_ptr<Listener> listener;

 private:
  void on_accept(std::unique_ptr<Socket> pending) override {
    accepted.push_back(std::move(pending));
    if (after_accept) after_accept();
  }
};

}  // namespace velmora::uv
