#include "platform/sim/sim_listening_port.h"

#include <algorithm>
#include <utility>

namespace velmora::sim {

ListeningPort::ListeningPort(Internet& internet, std::string address, std::uint16_t port,
                             int backlog)
    : internet_(internet),
      address_(std::move(address)),
      port_(port),
      backlog_(static_cast<std::size_t>(std::max(backlog, 1))) {}

void ListeningPort::set_accepting(bool accepting) {
  accepting_ = accepting;
  if (!accepting || waiting_.empty()) return;
  internet_.scheduler.next_turn([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->accept_one();
  });
}

void ListeningPort::close() {
  closed_ = true;
  for (const auto& connection : std::exchange(waiting_, {})) connection->reset();
}

// Who accepts at once has an empty backlog, however many handshakes are under way.
bool ListeningPort::full() const { return !accepting_ && waiting_.size() + half_open_ >= backlog_; }

void ListeningPort::admit(std::shared_ptr<Endpoint> connection) {
  --half_open_;
  waiting_.push_back(std::move(connection));
  if (waiting_.size() == 1) accept_one();
}

void ListeningPort::accept_one() {
  if (closed_ || !accepting_ || waiting_.empty()) return;
  const auto connection = std::move(waiting_.front());
  waiting_.pop_front();
  const Accept accept = accept_;  // the listener may be destroyed inside
  accept(connection);
  set_accepting(accepting_);
}

}  // namespace velmora::sim
