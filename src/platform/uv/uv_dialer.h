// Makes one outgoing connection: looks the host up, connects, keeps the time-out. Nothing is ever
// told inside start(); letting go of the dialer gives the attempt up without a word.
#pragma once

#include <uv.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/event_loop.h"
#include "platform/uv/uv_watch.h"

struct sockaddr_in;

namespace velmora::uv {

class UvLoop;

class UvDialer : private WatchEvents {
 public:
  // Called once, with what is connected or, when that failed, with nothing. It may destroy the
  // dialer.
  using Result = std::function<void(std::unique_ptr<UvWatch>)>;

  // An empty bind address leaves the choice to the system.
  UvDialer(UvLoop& loop, std::string bind_address, Result on_result);
  ~UvDialer() override;
  UvDialer(const UvDialer&) = delete;
  UvDialer& operator=(const UvDialer&) = delete;

  void start(const std::string& host, std::uint16_t port, int timeout_ms);
  void fail_later();  // in the next turn

 private:
  struct Lookup;

  void look_up(const std::string& host);
  void looked_up(const addrinfo* found);
  bool connect(const sockaddr_in& address);
  void on_writable() override;
  void finish(std::unique_ptr<UvWatch> connected);

  UvLoop& loop_;
  std::string bind_address_;
  Result on_result_;
  std::uint16_t port_ = 0;
  Lookup* lookup_ = nullptr;
  std::unique_ptr<UvWatch> connecting_;
  std::unique_ptr<Timer> timeout_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace velmora::uv
