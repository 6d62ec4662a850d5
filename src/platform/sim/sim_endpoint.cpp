#include "platform/sim/sim_endpoint.h"

#include <algorithm>
#include <utility>

namespace velmora::sim {
namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kJoinWaitUs = 200'000;  // a held segment leaves by then at the latest
constexpr std::size_t kTrickledBytes = 64;
constexpr std::int64_t kLingerUs = 5'000'000;  // what a closed socket gets rid of its bytes in

}  // namespace

Endpoint::Endpoint(Internet& internet, EndpointName local, EndpointName peer)
    : internet_(internet), local_(std::move(local)), peer_name_(std::move(peer)) {}

void Endpoint::set_events(SocketEvents* events) {
  events_ = events;
  plan_delivery();
}

void Endpoint::set_reading(bool reading) {
  reading_ = reading;
  plan_delivery();
}

void Endpoint::write(std::string_view data, bool alone) {
  queue_.write(data, alone);
  plan_flush();
}

void Endpoint::send(std::string segment) {
  if (over() || ending_) return;
  queue_.push(std::move(segment));
  pump();
}

std::size_t Endpoint::unsent() const {
  if (phase_ == Phase::over) return 0;
  const std::size_t room = kSendBuffer - std::min(kSendBuffer, unacked_);
  return queue_.written() + queue_.ready() - std::min(queue_.ready(), room);
}

std::size_t Endpoint::unacknowledged() const {
  if (phase_ == Phase::over) return 0;
  return queue_.written() + queue_.ready() + unacked_;
}

void Endpoint::close() {
  events_ = nullptr;
  if (over()) return;
  if (phase_ == Phase::connecting) {
    phase_ = Phase::over;
    return;
  }
  closing_ = true;
  inbox_.clear();
  open_window();
  plan_flush();
  internet_.scheduler.after(kLingerUs, [self = shared_from_this()] {
    if (!self->end_sent_) self->reset();
  });
}

void Endpoint::end_sending() {
  if (over()) return;
  ending_ = true;
  pump();
}

void Endpoint::reset() {
  events_ = nullptr;
  const bool stood = phase_ == Phase::standing;
  phase_ = Phase::over;
  queue_.clear();
  if (!stood || broken_) return;
  broken_ = true;
  internet_.scheduler.at(arrival(0), [peer = peer_] {
    if (const auto other = peer.lock()) other->reset_came();
  });
}

void Endpoint::establish() {
  if (phase_ != Phase::connecting) return;
  phase_ = Phase::standing;
  if (events_ != nullptr) events_->on_connect();
  pump();
}

void Endpoint::fail() {
  if (phase_ != Phase::connecting) return;
  phase_ = Phase::over;
  queue_.clear();
  if (events_ != nullptr) events_->on_connect_failed();
}

void Endpoint::reset_came() {
  if (phase_ == Phase::connecting) return fail();
  if (phase_ == Phase::over) return;
  phase_ = Phase::over;
  queue_.clear();
  inbox_.clear();
  disconnect_waits_ = !closing_;
  deliver();
}

std::int64_t Endpoint::arrival(std::size_t bytes) {
  const NetworkConditions& conditions = internet_.conditions;
  std::int64_t leaves_us = internet_.scheduler.now_us();
  if (conditions.bandwidth > 0) {
    const auto work = static_cast<std::int64_t>(bytes) * kMicrosecondsPerSecond;
    link_free_us_ = std::max(link_free_us_, leaves_us) +
                    (work + conditions.bandwidth - 1) / conditions.bandwidth;
    leaves_us = link_free_us_;
  }
  const auto spread = static_cast<std::uint64_t>(std::max<std::int64_t>(conditions.jitter_us, 0));
  const auto jitter_us = static_cast<std::int64_t>(internet_.chance.below(spread + 1));
  last_arrival_us_ = std::max(last_arrival_us_, leaves_us + conditions.latency_us + jitter_us);
  return last_arrival_us_;
}

void Endpoint::plan_flush() {
  if (flush_planned_) return;
  flush_planned_ = true;
  internet_.scheduler.after_event([self = shared_from_this()] { self->flush(); });
}

void Endpoint::flush() {
  flush_planned_ = queue_.end_turn();
  if (flush_planned_) {
    internet_.scheduler.next_turn([self = shared_from_this()] { self->flush(); });
  }
  pump();
}

std::size_t Endpoint::window() const {
  const auto peer = peer_.lock();
  const std::size_t used = in_flight_ + (peer ? peer->inbox_.size() : 0);
  const std::size_t whole = internet_.conditions.receive_window;
  return whole - std::min(whole, used);
}

void Endpoint::pump() {
  while (phase_ == Phase::standing && !broken_ && queue_.ready() > 0) {
    const std::size_t room = kSendBuffer - std::min(kSendBuffer, unacked_);
    const std::size_t most = std::min(room, window());
    if (most == 0) return;
    transmit(queue_.take(most));
  }
  if (phase_ == Phase::connecting) return;
  if ((closing_ || ending_) && !end_sent_ && queue_.empty()) send_end();
}

void Endpoint::transmit(const std::string& bytes) {
  const NetworkConditions& conditions = internet_.conditions;
  Chance& chance = internet_.chance;
  in_flight_ += bytes.size();
  unacked_ += bytes.size();
  if (chance.happens(conditions.reset_probability)) {
    return break_connection(arrival(bytes.size()));
  }
  const bool first_held = held_.empty();
  held_ += bytes;
  if (chance.happens(conditions.join_probability)) {
    if (first_held) {
      hold_ends_ = internet_.scheduler.after(kJoinWaitUs,
                                             [self = shared_from_this()] { self->release_held(); });
    }
    return;
  }
  release_held();
}

void Endpoint::release_held() {
  std::string bytes = std::exchange(held_, {});
  if (bytes.empty()) return;
  internet_.scheduler.cancel(hold_ends_);
  Chance& chance = internet_.chance;
  if (bytes.size() > 1 && chance.happens(internet_.conditions.split_probability)) {
    const std::size_t cut = 1 + static_cast<std::size_t>(chance.below(bytes.size() - 1));
    carry(bytes.substr(0, cut));
    bytes.erase(0, cut);
  }
  if (chance.happens(internet_.conditions.trickle_probability)) {
    const std::size_t single = std::min(bytes.size() - 1, kTrickledBytes);
    for (std::size_t i = 0; i < single; ++i) carry(bytes.substr(i, 1));
    bytes.erase(0, single);
  }
  carry(std::move(bytes));
}

void Endpoint::carry(std::string bytes) {
  const std::int64_t time_us = arrival(bytes.size());
  internet_.scheduler.at(time_us, [self = shared_from_this(), bytes = std::move(bytes)] {
    self->in_flight_ -= bytes.size();
    if (self->broken_) return;
    self->acknowledge_later(bytes.size());
    if (const auto peer = self->peer_.lock()) peer->data_came(bytes);
  });
}

void Endpoint::acknowledge_later(std::size_t bytes) {
  internet_.scheduler.after(internet_.conditions.latency_us, [self = shared_from_this(), bytes] {
    self->unacked_ -= bytes;
    self->pump();
  });
}

// The network lost a segment for good: both ends learn of it where they would.
void Endpoint::break_connection(std::int64_t time_us) {
  internet_.scheduler.at(time_us, [self = shared_from_this()] {
    self->internet_.scheduler.after(self->internet_.conditions.latency_us,
                                    [self] { self->reset_came(); });
    if (const auto peer = self->peer_.lock()) peer->reset_came();
  });
  queue_.clear();
}

void Endpoint::send_end() {
  end_sent_ = true;
  release_held();
  internet_.scheduler.at(arrival(0), [self = shared_from_this()] {
    if (self->broken_) return;
    if (const auto peer = self->peer_.lock()) peer->end_came();
  });
}

void Endpoint::data_came(std::string_view bytes) {
  if (phase_ != Phase::standing || closing_) return;
  inbox_ += bytes;
  deliver();
}

void Endpoint::end_came() {
  end_waits_ = true;
  deliver();
}

void Endpoint::plan_delivery() {
  if (events_ == nullptr) return;
  const bool readable = reading_ && (!inbox_.empty() || end_waits_);
  if (!readable && !disconnect_waits_) return;
  internet_.scheduler.next_turn([self = shared_from_this()] { self->deliver(); });
}

// The peer hears that there is room again.
void Endpoint::open_window() {
  const auto peer = peer_.lock();
  if (!peer || peer->queue_.ready() == 0) return;
  internet_.scheduler.after(internet_.conditions.latency_us, [peer] { peer->pump(); });
}

void Endpoint::deliver() {
  if (events_ != nullptr && reading_ && !inbox_.empty()) {
    const std::string data = std::exchange(inbox_, {});
    open_window();
    events_->on_read(data);
  }
  if (events_ != nullptr && reading_ && end_waits_ && inbox_.empty() && phase_ == Phase::standing) {
    phase_ = Phase::over;
    queue_.clear();
    disconnect_waits_ = true;
  }
  if (events_ != nullptr && std::exchange(disconnect_waits_, false)) events_->on_disconnect();
}

}  // namespace velmora::sim
