// One descriptor of a stream, which it owns, watched for bytes to read and for room to write. It
// reads and writes nothing itself. An error of the descriptor is told as whatever is watched for:
// the call that follows finds it.
#pragma once

#include <uv.h>

#include "platform/uv/uv_descriptor.h"
#include "platform/uv/uv_handle.h"

namespace velmora::uv {

class UvLoop;

// The receiver may destroy the watch in either.
class WatchEvents {
 public:
  virtual ~WatchEvents() = default;
  virtual void on_readable() {}
  virtual void on_writable() {}
};

class UvWatch {
 public:
  UvWatch(UvLoop& loop, Descriptor descriptor);

  void set_events(WatchEvents& events) { events_ = &events; }
  void set_reading(bool reading);
  void set_writing(bool writing);
  [[nodiscard]] int descriptor() const { return descriptor_.get(); }

 private:
  void came(int events);
  void update();

  UvLoop& loop_;
  WatchEvents* events_ = nullptr;
  Descriptor descriptor_;
  Handle<uv_poll_t> poll_;  // goes first
  bool reading_ = false;
  bool writing_ = false;
  int watched_ = 0;
};

}  // namespace velmora::uv
