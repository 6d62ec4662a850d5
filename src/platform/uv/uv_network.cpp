#include "platform/uv/uv_network.h"

#include <sys/resource.h>

#include <algorithm>
#include <utility>

#include "platform/uv/uv_address.h"
#include "platform/uv/uv_connection.h"
#include "platform/uv/uv_listener.h"
#include "platform/uv/uv_socket.h"

namespace velmora::uv {
namespace {

constexpr std::int64_t kPrimaryAddressMs = 5000;  // for so long it is not looked up again
constexpr std::size_t kDescriptorsKeptBack = 64;  // for files, folders and the control socket

}  // namespace

UvNetwork::UvNetwork(UvLoop& loop, std::string bind_address, int max_stall_ms)
    : loop_(loop), bind_address_(std::move(bind_address)), max_stall_ms_(max_stall_ms) {
  if (!bind_address_.empty() && !parse_address(bind_address_, 0)) {
    throw PlatformError(Errc::system, "Not an IPv4 address: \"" + bind_address_ + "\"");
  }
  if (bind_address_ == "0.0.0.0") bind_address_.clear();
  loop_.add_turn_end(*this);
}

UvNetwork::~UvNetwork() {
  loop_.remove_turn_end(*this);
  while (!connections_.empty()) {
    const auto connection = connections_.begin()->second;
    connection->abort();
  }
}

std::unique_ptr<Listener> UvNetwork::listen(std::uint16_t port, int backlog,
                                            ListenerEvents& events) {
  return std::make_unique<UvListener>(*this, port, backlog, events);
}

std::unique_ptr<Socket> UvNetwork::connect(const std::string& host, std::uint16_t port,
                                           int timeout_ms, SocketEvents& events) {
  const bool room = has_descriptor_to_spare();
  auto connection = make_connection(&events);
  if (room) {
    connection->dial(host, port, timeout_ms);
  } else {
    connection->fail_later(host, port);
  }
  return std::make_unique<UvSocket>(std::move(connection));
}

std::string UvNetwork::local_address() const {
  if (!bind_address_.empty()) return bind_address_;
  const std::int64_t now = loop_.now_ms();
  if (now >= primary_until_ms_) {
    primary_address_ = primary_address();
    primary_until_ms_ = now + kPrimaryAddressMs;
  }
  return primary_address_;
}

bool UvNetwork::parting() const {
  return std::any_of(connections_.begin(), connections_.end(),
                     [](const auto& entry) { return entry.second->parting(); });
}

bool UvNetwork::has_descriptor_to_spare() const {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return true;
  return connections_.size() + listeners_ + kDescriptorsKeptBack < limit.rlim_cur;
}

std::unique_ptr<Socket> UvNetwork::adopt(Descriptor accepted) {
  std::unique_ptr<UvWatch> watch;
  try {
    watch = std::make_unique<UvWatch>(loop_, std::move(accepted));
  } catch (const PlatformError&) {
    return nullptr;
  }
  auto connection = make_connection(nullptr);
  connection->stand(std::move(watch));
  return std::make_unique<UvSocket>(std::move(connection));
}

std::shared_ptr<UvConnection> UvNetwork::make_connection(SocketEvents* events) {
  auto connection = std::make_shared<UvConnection>(*this, events);
  connections_[connection.get()] = connection;
  return connection;
}

void UvNetwork::flush_later(UvConnection& connection) {
  if (!connection.plan_flush()) return;
  planned_.push_back(connection.shared_from_this());
  loop_.work_begun();
}

void UvNetwork::on_turn_end() {
  leaving_.swap(planned_);  // those that are held plan to be flushed again
  for (const auto& connection : leaving_) connection->flush_planned();
  leaving_.clear();
}

void UvNetwork::make_room() {
  on_turn_end();
  for (const auto& entry : connections_) entry.second->count_unsent();
}

void UvNetwork::forget(UvConnection& connection) { connections_.erase(&connection); }

}  // namespace velmora::uv
