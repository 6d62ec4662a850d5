// Takes connections from a listening descriptor, when its owner may have one more. Those it does
// not take wait in the kernel's backlog. Running out of descriptors makes it pause, never spin.
#pragma once

#include <uv.h>

#include <memory>

#include "platform/event_loop.h"
#include "platform/uv/uv_descriptor.h"
#include "platform/uv/uv_handle.h"

namespace velmora::uv {

class UvLoop;

class AcceptorEvents {
 public:
  virtual ~AcceptorEvents() = default;
  [[nodiscard]] virtual bool may_accept() const = 0;
  virtual void on_accepted(Descriptor connection) = 0;  // may destroy the acceptor
};

class UvAcceptor {
 public:
  UvAcceptor(UvLoop& loop, Descriptor listening, AcceptorEvents& events);

  void set_accepting(bool accepting);
  [[nodiscard]] int descriptor() const { return listening_.get(); }

 private:
  void update();
  void ready();
  void postpone();

  UvLoop& loop_;
  AcceptorEvents& events_;
  Descriptor listening_;  // closed after its poll handle
  Handle<uv_poll_t> poll_;
  std::unique_ptr<Timer> retry_;  // on while accepting is postponed
  bool accepting_ = true;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace velmora::uv
