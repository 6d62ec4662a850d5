#include "platform/sim/sim_control.h"

#include <utility>

#include "platform/error.h"

namespace velmora::sim {

void SimControl::open(const std::string& name, ControlChannelEvents& events) {
  if (events_ != nullptr) throw PlatformError(Errc::address_in_use);
  name_ = name;
  events_ = &events;
  clients_.clear();
}

void SimControl::send_line(std::uint64_t client, std::string_view line) {
  const auto found = clients_.find(client);
  if (found == clients_.end()) return;
  found->second.lines.emplace_back(line);
  found->second.bytes += line.size() + 1;
  if (found->second.bytes > kMaxControlUnsent) {
    clients_.erase(found);
    loop_.post([this, client] {
      if (events_ != nullptr) events_->on_client_gone(client);
    });
  }
}

void SimControl::close() { events_ = nullptr; }

std::vector<std::string> SimControl::say(std::string_view line, std::uint64_t client) {
  if (events_ == nullptr) throw PlatformError(Errc::not_connected);
  if (!clients_.contains(client) && clients_.size() >= kMaxControlClients) return {};
  if (line.size() > kMaxControlLine) {
    drop(client);
    return {};
  }
  Client earlier = std::exchange(clients_[client], {});
  events_->on_client_line(client, line);
  std::vector<std::string> answers = take(client);
  if (const auto found = clients_.find(client); found != clients_.end()) {
    found->second = std::move(earlier);
  }
  return answers;
}

std::vector<std::string> SimControl::take(std::uint64_t client) {
  const auto found = clients_.find(client);
  if (found == clients_.end()) return {};
  return std::exchange(found->second, {}).lines;
}

void SimControl::leave(std::uint64_t client) { drop(client); }

void SimControl::drop(std::uint64_t client) {
  if (clients_.erase(client) != 0 && events_ != nullptr) events_->on_client_gone(client);
}

}  // namespace velmora::sim
