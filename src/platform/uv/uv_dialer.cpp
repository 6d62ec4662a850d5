#include "platform/uv/uv_dialer.h"

#include <netdb.h>

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
  if (!address || !can_be_reached(*address) || connect(*address) < 0) fail_later();
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
    if (connect(address) < 0) break;
    return;
  }
  finish(nullptr);
}

int UvDialer::connect(const sockaddr_in& address) {
  tcp_ = make_handle<uv_tcp_t>(this, [&](uv_tcp_t* h) { return uv_tcp_init(loop_.native(), h); });
  if (const auto local = parse_address(bind_address_, 0)) {
    const int result = uv_tcp_bind(tcp_.get(), reinterpret_cast<const sockaddr*>(&*local), 0);
    if (result < 0) return result;
  }
  auto request = std::make_unique<uv_connect_t>();
  const int result =
      uv_tcp_connect(request.get(), tcp_.get(), reinterpret_cast<const sockaddr*>(&address),
                     [](uv_connect_t* ended, int status) noexcept {
                       const std::unique_ptr<uv_connect_t> done(ended);
                       auto* dialer = static_cast<UvDialer*>(done->handle->data);
                       if (dialer == nullptr) return;  // given up
                       dialer->finish(status < 0 ? nullptr : std::move(dialer->tcp_));
                     });
  if (result == 0) static_cast<void>(request.release());  // the callback owns it
  loop_.work_begun();
  return result;
}

void UvDialer::finish(Handle<uv_tcp_t> tcp) {
  const Result on_result = std::exchange(on_result_, nullptr);
  timeout_.reset();
  if (on_result) on_result(std::move(tcp));
}

}  // namespace velmora::uv
