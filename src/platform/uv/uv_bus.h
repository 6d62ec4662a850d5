// The system's message bus on the real loop: a connection that is opened when first asked for,
// called and listened to without ever waiting. It owns the connection; who asked for an answer and
// has gone by then is not told, because letting go of the bus drops every call.
#pragma once

#include <uv.h>

#include <functional>
#include <memory>

#include "platform/uv/bus_library.h"
#include "platform/uv/uv_handle.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {

class UvBus {
 public:
  // `on_lost` comes from the loop, when the connection has ended by itself.
  UvBus(UvLoop& loop, std::function<void()> on_lost);
  ~UvBus();
  UvBus(const UvBus&) = delete;
  UvBus& operator=(const UvBus&) = delete;

  // Raises the platform's error where there is no bus.
  void open();

  // Good while it is open. Call `pump` after any call of the library that asks something.
  [[nodiscard]] const BusLibrary& library() const { return *library_; }
  // Null until it is open.
  [[nodiscard]] sd_bus* native() const { return bus_.get(); }
  // Sends what waits, handles what came, and says to the loop what to wait for.
  void pump();

 private:
  struct Close {
    void operator()(sd_bus* bus) const { library->close_unref(bus); }
    const BusLibrary* library;
  };

  void wait_for_more();
  void lose();

  UvLoop& loop_;
  std::function<void()> on_lost_;
  std::unique_ptr<const BusLibrary> library_;
  std::unique_ptr<sd_bus, Close> bus_{nullptr, Close{nullptr}};
  Handle<uv_poll_t> poll_;
  std::unique_ptr<Timer> timeout_;
  bool pumping_ = false;
};

}  // namespace velmora::uv
