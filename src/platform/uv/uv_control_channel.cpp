#include "platform/uv/uv_control_channel.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <filesystem>
#include <utility>

namespace velmora::uv {
namespace {

constexpr int kBacklog = 16;
constexpr mode_t kForOwner = 0600;

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  constexpr std::size_t kMost = sizeof address.sun_path - 1;
  if (path.size() > kMost) {
    throw PlatformError(
        Errc::bad_file_name,
        fmt::format("The path of the control socket is longer than {} bytes: {}", kMost, path));
  }
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, kMost);
  return address;
}

void remove_socket_file(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode)) ::unlink(path.c_str());
}

// Nobody can connect before listen(), so the file has its mode in time.
Descriptor listen_at(const std::string& path) {
  const sockaddr_un address = address_of(path);
  Descriptor fd(
      checked([] { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0); }));
  remove_socket_file(path);
  checked([&] {
    return ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  });
  checked([&] { return ::chmod(path.c_str(), kForOwner); });
  checked([&] { return ::listen(fd.get(), kBacklog); });
  return fd;
}

}  // namespace

UvControlChannel::UvControlChannel(UvLoop& loop, const std::string& profile)
    : loop_(loop), profile_(std::filesystem::absolute(profile).string()) {
  loop_.add_turn_end(*this);
}

UvControlChannel::~UvControlChannel() {
  UvControlChannel::close();
  loop_.remove_turn_end(*this);
}

void UvControlChannel::open(const std::string& name, ControlChannelEvents& events) {
  if (acceptor_ != nullptr) throw PlatformError(Errc::address_in_use);
  path_ = (std::filesystem::path(profile_) / name).string();
  acceptor_ =
      std::make_unique<UvAcceptor>(loop_, listen_at(path_), static_cast<AcceptorEvents&>(*this));
  events_ = &events;
}

void UvControlChannel::send_line(std::uint64_t client, std::string_view line) {
  const auto found = clients_.find(client);
  if (found != clients_.end()) found->second->send_line(line);
}

void UvControlChannel::close() {
  if (acceptor_ == nullptr) return;
  acceptor_.reset();
  remove_socket_file(path_);
  events_ = nullptr;
  while (!clients_.empty()) part(clients_.begin()->first);
}

void UvControlChannel::on_accepted(Descriptor connection) {
  if (clients_.size() >= kMaxControlClients) return;  // closed again
  const std::uint64_t number = ++last_number_;
  try {
    clients_[number] = std::make_unique<UvControlClient>(loop_, std::move(connection), number,
                                                         static_cast<ControlClientEvents&>(*this));
  } catch (const PlatformError&) {
    clients_.erase(number);
  }
}

void UvControlChannel::on_line(std::uint64_t client, std::string_view line) {
  events_->on_client_line(client, line);
}

void UvControlChannel::on_end(std::uint64_t client) {
  part(client);
  events_->on_client_gone(client);
}

// It goes at the end of a turn, when it is not in one of its own events.
void UvControlChannel::part(std::uint64_t client) {
  auto node = clients_.extract(client);
  node.mapped()->part();
  parting_.push_back(std::move(node.mapped()));
  loop_.request_turn();
}

void UvControlChannel::on_turn_end() {
  for (const auto& entry : clients_) entry.second->flush();
  for (const auto& client : parting_) client->flush();
  std::erase_if(parting_, [](const auto& client) { return client->gone(); });
}

}  // namespace velmora::uv
