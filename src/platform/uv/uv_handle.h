// Ownership of libuv handles. A handle must live until its close callback has run, so owners hold
// it by Handle: letting go of it closes it, and the memory goes with the close callback. No other
// callback comes after that, except those of requests, which own themselves.
#pragma once

#include <uv.h>

#include <memory>

#include "platform/error.h"

namespace velmora::uv {

inline void check(int result) {
  if (result < 0) throw PlatformError::from_errno(-result);
}

struct CloseHandle {
  template <class H>
  void operator()(H* handle) const {
    handle->data = nullptr;
    uv_close(reinterpret_cast<uv_handle_t*>(handle),
             [](uv_handle_t* closed) { delete reinterpret_cast<H*>(closed); });
  }
};

template <class H>
using Handle = std::unique_ptr<H, CloseHandle>;

// Makes a handle with one of libuv's init functions; `data` is what its callbacks find.
template <class H, class Init>
Handle<H> make_handle(void* data, Init init) {
  auto fresh = std::make_unique<H>();
  check(init(fresh.get()));
  fresh->data = data;
  return Handle<H>(fresh.release());
}

}  // namespace velmora::uv
