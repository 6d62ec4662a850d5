#include "platform/uv/uv_dns_request.h"

#include <arpa/inet.h>

#include <array>
#include <utility>

#include "platform/dns_reply.h"
#include "platform/uv/uv_address.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

constexpr int kClassInternet = 1;
constexpr int kTypePtr = 12;

int failure_of(int status) {
  switch (status) {
    case ARES_ETIMEOUT:
      return kDnsTimedOut;
    case ARES_ECONNREFUSED:  // and every other error of the socket
      return kDnsUnreachable;
    case ARES_EBADRESP:
      return kDnsBadReply;
    default:
      return kDnsNoMeans;
  }
}

}  // namespace

UvDnsRequest::UvDnsRequest(UvLoop& loop, DnsClient::OnAnswer on_answer)
    : loop_(loop), on_answer_(std::move(on_answer)) {}

// Ending the channel calls back for sockets and for the query; both find nothing to do.
UvDnsRequest::~UvDnsRequest() {
  on_answer_ = nullptr;
  channel_.reset();
}

void UvDnsRequest::answer_later(DnsAnswer answer) {
  answer_ = std::move(answer);
  loop_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) give();
  });
}

void UvDnsRequest::ask(const DnsServer& server, const std::string& address,
                       const std::string& local_address) {
  if (!open_channel(server, local_address)) return answer_later(dns_failure(kDnsNoMeans));
  reverse_name_ = dns_reverse_name(address);
  deadline_ = loop_.make_timer(kDnsTimeoutMs, [this] {
    answer_ = dns_failure(kDnsTimedOut);
    give();
  });
  deadline_->set_enabled(true);
  const auto note = [](void* request, int status, int, unsigned char* reply, int length) noexcept {
    const char* bytes = reply != nullptr ? reinterpret_cast<const char*>(reply) : "";
    const auto size = reply != nullptr && length > 0 ? static_cast<std::size_t>(length) : 0;
    static_cast<UvDnsRequest*>(request)->note_reply(status, {bytes, size});
  };
  ares_query(channel_.get(), reverse_name_.c_str(), kClassInternet, kTypePtr, note, this);
  if (answer_) answer_later(std::move(*answer_));
}

// Every option that the system's files could give is given here, so that none of them is read.
bool UvDnsRequest::open_channel(const DnsServer& server, const std::string& local_address) {
  const auto address = parse_address(server.address, server.port);
  if (!address) return false;
  in_addr server_address = address->sin_addr;
  std::array<char, 2> lookups = {"b"};
  ares_options options{};
  // With "no check", replies of refusal come through and are told apart; the rest is discarded
  // unless identifier, question and sender fit.
  options.flags = ARES_FLAG_NOCHECKRESP | ARES_FLAG_NOSEARCH | ARES_FLAG_NOALIASES;
  options.timeout = 2 * kDnsTimeoutMs;  // the deadline here comes first
  options.tries = 1;
  options.ndots = 1;
  options.udp_port = options.tcp_port = server.port;
  options.servers = &server_address;
  options.nservers = 1;
  options.lookups = lookups.data();
  options.sock_state_cb = [](void* request, ares_socket_t fd, int readable, int writable) noexcept {
    static_cast<UvDnsRequest*>(request)->watch(fd, readable != 0, writable != 0);
  };
  options.sock_state_cb_data = this;
  const int mask = ARES_OPT_FLAGS | ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES | ARES_OPT_NDOTS |
                   ARES_OPT_UDP_PORT | ARES_OPT_TCP_PORT | ARES_OPT_SERVERS | ARES_OPT_DOMAINS |
                   ARES_OPT_LOOKUPS | ARES_OPT_SORTLIST | ARES_OPT_SOCK_STATE_CB;
  ares_channel channel = nullptr;
  if (ares_init_options(&channel, &options, mask) != ARES_SUCCESS) return false;
  channel_.reset(channel);
  if (const auto local = parse_address(local_address, 0)) {
    ares_set_local_ip4(channel, ntohl(local->sin_addr.s_addr));
  }
  return true;
}

void UvDnsRequest::watch(ares_socket_t fd, bool readable, bool writable) {
  if (!readable && !writable) {
    polls_.erase(fd);
    return;
  }
  try {
    Handle<uv_poll_t>& poll = polls_[fd];
    if (!poll) {
      poll = make_handle<uv_poll_t>(
          this, [&](uv_poll_t* handle) { return uv_poll_init(loop_.native(), handle, fd); });
    }
    const auto ready = [](uv_poll_t* handle, int status, int events) noexcept {
      uv_os_fd_t ready_fd = -1;
      uv_fileno(reinterpret_cast<uv_handle_t*>(handle), &ready_fd);
      const bool any = status < 0;  // c-ares finds out what is wrong
      static_cast<UvDnsRequest*>(handle->data)
          ->process(any || (events & UV_READABLE) != 0 ? ready_fd : ARES_SOCKET_BAD,
                    any || (events & UV_WRITABLE) != 0 ? ready_fd : ARES_SOCKET_BAD);
    };
    check(uv_poll_start(poll.get(), (readable ? UV_READABLE : 0) | (writable ? UV_WRITABLE : 0),
                        ready));
    loop_.work_begun();
  } catch (const std::exception&) {
    polls_.erase(fd);
    if (!answer_) answer_ = dns_failure(kDnsNoMeans);
  }
}

void UvDnsRequest::process(ares_socket_t readable, ares_socket_t writable) {
  ares_process_fd(channel_.get(), readable, writable);
  if (answer_) give();
}

// The reply is read here and not judged by c-ares, which counts what it does not like as no record.
void UvDnsRequest::note_reply(int status, std::string_view reply) {
  if (!on_answer_ || answer_) return;
  answer_ = reply.empty() ? dns_failure(failure_of(status)) : read_dns_reply(reply, reverse_name_);
}

void UvDnsRequest::give() {
  const DnsAnswer answer = std::move(*answer_);
  deadline_.reset();
  channel_.reset();
  // Nothing of this is touched after the call: it may destroy the request.
  const DnsClient::OnAnswer on_answer = std::exchange(on_answer_, nullptr);
  if (on_answer) on_answer(answer);
}

}  // namespace velmora::uv
