// One client of the control socket: cuts what it sends into lines, sends lines back. It may be
// parted with while it is in one of its own events; the channel destroys it at the end of a turn.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/event_loop.h"
#include "platform/uv/uv_descriptor.h"
#include "platform/uv/uv_outbox.h"
#include "platform/uv/uv_watch.h"

namespace velmora::uv {

class UvLoop;

class ControlClientEvents {
 public:
  virtual ~ControlClientEvents() = default;
  virtual void on_line(std::uint64_t client, std::string_view line) = 0;
  // Nothing more comes from it: it hung up, or broke a limit.
  virtual void on_end(std::uint64_t client) = 0;
};

class UvControlClient : private WatchEvents {
 public:
  UvControlClient(UvLoop& loop, Descriptor connection, std::uint64_t number,
                  ControlClientEvents& events);

  void send_line(std::string_view line);
  void flush();  // never calls the events
  void part();   // no event comes any more; what was sent still leaves, for a while
  [[nodiscard]] bool gone() const { return gone_; }  // nothing of it is left to do

 private:
  void on_readable() override;
  void on_writable() override;
  void dispatch_lines();
  void end();
  void end_later();

  UvLoop& loop_;
  std::uint64_t number_;
  ControlClientEvents* events_;
  UvWatch watch_;
  UvOutbox outbox_;
  std::string incoming_;
  std::size_t searched_ = 0;  // of incoming_, without a line end
  bool gone_ = false;
  std::unique_ptr<Timer> parting_limit_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace velmora::uv
