#include "platform/uv/uv_acceptor.h"

#include <sys/socket.h>

#include <utility>

#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

constexpr int kMostPerTurn = 64;
constexpr int kRetryMs = 100;

}  // namespace

UvAcceptor::UvAcceptor(UvLoop& loop, Descriptor listening, AcceptorEvents& events)
    : loop_(loop),
      events_(events),
      listening_(std::move(listening)),
      poll_(make_handle<uv_poll_t>(this,
                                   [&](uv_poll_t* handle) {
                                     return uv_poll_init(loop.native(), handle, listening_.get());
                                   })),
      retry_(loop.make_timer(kRetryMs, [this] {
        retry_->set_enabled(false);
        update();
      })) {
  update();
}

void UvAcceptor::set_accepting(bool accepting) {
  accepting_ = accepting;
  update();
}

void UvAcceptor::update() {
  if (!accepting_ || retry_->enabled()) {
    uv_poll_stop(poll_.get());
    return;
  }
  check(uv_poll_start(poll_.get(), UV_READABLE, [](uv_poll_t* handle, int, int) noexcept {
    static_cast<UvAcceptor*>(handle->data)->ready();
  }));
  loop_.work_begun();
}

void UvAcceptor::ready() {
  const std::weak_ptr<int> alive = alive_;
  for (int i = 0; i < kMostPerTurn && accepting_; ++i) {
    if (!events_.may_accept()) return postpone();
    Descriptor connection(
        accept4(listening_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (connection.get() < 0) {
      if (errno == EAGAIN || errno == EWOULDBLOCK) return;
      if (errno == EINTR || errno == ECONNABORTED) continue;
      return postpone();
    }
    events_.on_accepted(std::move(connection));
    if (alive.expired()) return;
  }
}

void UvAcceptor::postpone() {
  retry_->set_enabled(true);
  update();
}

}  // namespace velmora::uv
