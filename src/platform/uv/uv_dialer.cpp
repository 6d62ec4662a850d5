#include "platform/uv/uv_dialer.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cstring>
#include <utility>

#include "platform/uv/uv_address.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {

// Owns itself until libuv has called back: a look-up that runs cannot be taken back.
struct UvDialer::Lookup {
  uv_getaddrinfo_t request{};
  UvDialer* dialer = nullptr;
};

UvDialer::UvDialer(UvLoop& loop, std::string bind_address, Result on_result)
    : loop_(loop), bind_address_(std::move(bind_address)), on_result_(std::move(on_result)) {}

UvDialer::~UvDialer() {
  if (lookup_ == nullptr) return;
  lookup_->dialer = nullptr;
  uv_cancel(reinterpret_cast<uv_req_t*>(&lookup_->request));
}

void UvDialer::start(const std::string& host, std::uint16_t port, int timeout_ms) {
  port_ = port;
  if (timeout_ms > 0) {
    timeout_ = loop_.make_timer(timeout_ms, [this] { finish(nullptr); });
    timeout_->set_enabled(true);
  }
  if (port == 0 || host.empty() || host.find('\0') != std::string::npos) return fail_later();
  if (!looks_dotted(host)) return look_up(host);
  const auto address = parse_address(host, port);
  if (!address || !can_be_reached(*address) || !connect(*address)) fail_later();
}

void UvDialer::fail_later() {
  loop_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) finish(nullptr);
  });
}

void UvDialer::look_up(const std::string& host) {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  auto lookup = std::make_unique<Lookup>();
  lookup->dialer = this;
  lookup->request.data = lookup.get();
  const int result = uv_getaddrinfo(
      loop_.native(), &lookup->request,
      [](uv_getaddrinfo_t* request, int status, addrinfo* found) noexcept {
        const std::unique_ptr<Lookup> done(static_cast<Lookup*>(request->data));
        if (done->dialer != nullptr) done->dialer->looked_up(status < 0 ? nullptr : found);
        uv_freeaddrinfo(found);
      },
      host.c_str(), nullptr, &hints);
  if (result < 0) return fail_later();
  lookup_ = lookup.release();
}

void UvDialer::looked_up(const addrinfo* found) {
  lookup_ = nullptr;
  for (; found != nullptr; found = found->ai_next) {
    if (found->ai_family != AF_INET) continue;
    sockaddr_in address{};
    std::memcpy(&address, found->ai_addr, sizeof address);
    address.sin_port = htons(port_);
    if (!can_be_reached(address)) continue;
    if (!connect(address)) break;
    return;
  }
  finish(nullptr);
}

bool UvDialer::connect(const sockaddr_in& address) {
  try {
    Descriptor socket(checked(
        [] { return ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP); }));
    if (const auto local = parse_address(bind_address_, 0)) {
      const int on = 1;
      checked([&] { return setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on); });
      checked([&] {
        return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&*local), sizeof *local);
      });
    }
    const int result =
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (result < 0 && errno != EINPROGRESS && errno != EINTR) return false;
    connecting_ = std::make_unique<UvWatch>(loop_, std::move(socket));
  } catch (const PlatformError&) {
    return false;
  }
  connecting_->set_events(*this);
  connecting_->set_writing(true);
  return true;
}

void UvDialer::on_writable() {
  connecting_->set_writing(false);
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(connecting_->descriptor(), SOL_SOCKET, SO_ERROR, &error, &size);
  finish(error == 0 ? std::move(connecting_) : nullptr);
}

// A result that comes late finds nothing to tell.
void UvDialer::finish(std::unique_ptr<UvWatch> connected) {
  const Result on_result = std::exchange(on_result_, nullptr);
  timeout_.reset();
  if (on_result) on_result(std::move(connected));
}

}  // namespace velmora::uv
