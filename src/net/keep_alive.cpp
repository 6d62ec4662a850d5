#include "net/keep_alive.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr std::int16_t kSilentTicksToPing = 2;
constexpr std::size_t kMostNotes = 256;
constexpr std::int64_t kNeverMs = std::numeric_limits<std::int64_t>::min();

}  // namespace

KeepAlive::KeepAlive(EventLoop& loop, Form& form, DebugLog& log, MessageConnections& connections,
                     Originator& originator, const HostCache& cache, const Behaviour& behaviour)
    : loop_(loop),
      form_(form),
      log_(log),
      connections_(connections),
      originator_(originator),
      cache_(cache),
      behaviour_(behaviour),
      replace_(loop.make_timer(kFirstPauseMs, [this] { replace_Timer(); })) {
  connections_.watched_by(*this);
}

void KeepAlive::stop() {
  rest();
  left_.clear();
}

void KeepAlive::follow_behaviour() {
  if (!behaviour_.keep_alive) stop();
}

void KeepAlive::rest() {
  replace_->set_enabled(false);
  tried_.clear();
  attempt_ = 0;
}

// The connection itself ends at its fifth silent tick, pinged or not.
void KeepAlive::silent(std::size_t index, std::int16_t ticks) {
  if (behaviour_.keep_alive && ticks % kSilentTicksToPing == 0) originator_.send_keep_alive(index);
}

// Kept: with the switch off nothing replaces a connection.
void KeepAlive::fell(std::size_t index) {
  const bool by_person = std::exchange(leaving_, 0) == index;
  if (!behaviour_.keep_alive || by_person || replace_->enabled()) return;
  if (connections_.connection_slots().at(index).direction != "Out") return;
  trap(log_, "keep_alive: ", [&] {
    replace_->set_interval(kFirstPauseMs);
    replace_->set_enabled(true);
  });
}

void KeepAlive::left(std::size_t index) {
  if (!behaviour_.keep_alive) return;
  leaving_ = connections_.connected(index) ? index : 0;
  trap(log_, "keep_alive: ", [&] {
    note(left_, connections_.connection_slots().at(index).address, loop_.now_ms());
  });
}

// While the connector works or the last try is under way it only waits.
void KeepAlive::replace_Timer() {
  const bool ours = attempt_ != 0 && connections_.generation(attempt_) == attempt_generation_;
  const std::int16_t state =
      ours ? connections_.connection_slots().at(attempt_).state : std::int16_t{kFreed};
  if (!form_.connect_auto.enabled() || state == kOpening) return;
  if (!trap(log_, "keep_alive: ", [&] {
        if (enough()) return rest();
        const int pause_ms = state == kConnected ? kFirstPauseMs : replace_->interval();
        try_next();
        replace_->set_interval(std::min(2 * pause_ms, kLongestPauseMs));
      })) {
    rest();
  }
}

// An empty field is 0, and nothing is missing.
bool KeepAlive::enough() const {
  const auto& slots = connections_.connection_slots();
  std::size_t standing = 0;
  for (const std::size_t index : connections_.connected_ones()) {
    if (slots.at(index).direction == "Out") ++standing;
  }
  return static_cast<double>(standing) >= typed_number(form_.max_out_host.text());
}

void KeepAlive::try_next() {
  attempt_ = 0;
  const std::size_t row = next_row();
  if (row == 0) return;
  const CacheHost host = cache_.row(row);
  note(tried_, host.address, loop_.now_ms());
  if (!connections_.connect_out(host.address, host.port, host.host_name).empty()) return;
  const auto& slots = connections_.connection_slots();
  for (std::size_t index = 1; index <= slots.upper_bound(); ++index) {
    if (slots.at(index).state != kOpening || slots.at(index).address != host.address) continue;
    attempt_ = index;
    attempt_generation_ = connections_.generation(index);
  }
}

// The one that was tried the longest ago, or never; of several the one that ponged last. 0: none.
std::size_t KeepAlive::next_row() const {
  std::size_t best = 0;
  std::int64_t best_ms = 0;
  for (std::size_t row = 1; row <= cache_.rows(); ++row) {
    const CacheHost& host = cache_.row(row);
    const std::int64_t at_ms = noted_ms(tried_, host.address);
    if ((best != 0 && at_ms >= best_ms) || !may_be_tried(host)) continue;
    best = row;
    best_ms = at_ms;
    if (at_ms == kNeverMs) break;
  }
  return best;
}

bool KeepAlive::may_be_tried(const CacheHost& host) const {
  if (host.address == connections_.local_address()) return false;
  const std::int64_t left_ms = noted_ms(left_, host.address);
  if (left_ms != kNeverMs && loop_.now_ms() - left_ms < kLeftAloneMs) return false;
  const auto& slots = connections_.connection_slots();
  return std::none_of(slots.begin(), slots.end(), [&](const ConnectionSlot& slot) {
    return slot.state >= kOpening && slot.address == host.address;
  });
}

void KeepAlive::note(Notes& notes, const std::string& address, std::int64_t now_ms) {
  std::erase_if(notes, [&](const Noted& noted) { return noted.address == address; });
  notes.push_back({address, now_ms});
  if (notes.size() > kMostNotes) notes.pop_front();
}

std::int64_t KeepAlive::noted_ms(const Notes& notes, const std::string& address) {
  const auto at = std::find_if(notes.begin(), notes.end(),
                               [&](const Noted& noted) { return noted.address == address; });
  return at == notes.end() ? kNeverMs : at->at_ms;
}

}  // namespace velmora
