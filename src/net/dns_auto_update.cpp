#include "net/dns_auto_update.h"

#include <utility>

#include "net/dns_lookups.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr int kPassMs = 5000;
constexpr int kNextWalkMs = 500;
constexpr std::size_t kShortestName = 3;  // that is taken from the cache

}  // namespace

DnsAutoUpdate::DnsAutoUpdate(EventLoop& loop, DnsNames& names, DebugLog& log,
                             std::vector<NamedRecords*> arrays)
    : loop_(loop),
      names_(names),
      log_(log),
      arrays_(std::move(arrays)),
      dnsAutoT_(loop.make_timer(kPassMs, [this] { dns_auto_update(); })),
      next_walk_(loop.make_timer(kNextWalkMs, [this] {
        next_walk_->set_enabled(false);
        walk();
      })) {}

void DnsAutoUpdate::start() {
  started_ = true;
  if (!alive_) alive_ = std::make_shared<int>();
  dnsAutoT_->set_enabled(!passing_);
}

void DnsAutoUpdate::stop() {
  started_ = passing_ = walking_ = walk_again_ = false;
  dnsAutoT_->set_enabled(false);
  next_walk_->set_enabled(false);
  asked_for_.clear();
  waiting_.clear();
  unanswered_ = 0;
  alive_.reset();
}

void DnsAutoUpdate::dns_auto_update() {
  dnsAutoT_->set_enabled(false);
  passing_ = true;
  walk();
}

void DnsAutoUpdate::walk() {
  walk_again_ = walking_;
  if (walking_) return;
  walking_ = true;
  array_ = 0;
  index_ = 1;
  named_ = false;
  step([this] { post_slice(); });
}

// A step that fails ends the walk; the next one makes up for it.
void DnsAutoUpdate::step(const std::function<void()>& body) {
  if (trap(log_, "dns_auto_update: ", body)) return;
  walking_ = false;
  next_walk_->set_enabled(started_);
}

void DnsAutoUpdate::post_slice() {
  loop_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) step([this] { walk_slice(); });
  });
}

void DnsAutoUpdate::walk_slice() {
  for (std::size_t left = kRecordsPerTurn; left > 0 && array_ < arrays_.size();) {
    NamedRecords& records = *arrays_[array_];
    if (index_ <= records.upper_bound()) {
      trap(log_, "dns_auto_update: ", [&] { visit(records, index_); });
      ++index_;
      --left;
      continue;
    }
    if (std::exchange(named_, false)) records.show_again();
    ++array_;
    index_ = 1;
  }
  ask_more();
  if (array_ < arrays_.size()) return post_slice();
  end_walk();
}

void DnsAutoUpdate::visit(NamedRecords& records, std::size_t index) {
  const std::string* address = records.nameless_address(index);
  if (address == nullptr) return;
  const std::string known = names_.dns_from_cache(*address);
  const auto asked = asked_for_.find(*address);
  if (known.size() >= kShortestName) {
    records.set_host_name(index, known);
  } else if (asked == asked_for_.end()) {
    if (asked_for_.size() >= kMostAddressesPerPass) return;
    waiting_.push_back(*address);
    asked_for_.emplace(*address, std::nullopt);
    return;
  } else if (asked->second) {
    records.set_host_name(index, *asked->second);
  } else {
    return;
  }
  named_ = true;
}

void DnsAutoUpdate::end_walk() {
  walking_ = false;
  if (walk_again_) return walk();
  if (unanswered_ > 0 || next_walk_->enabled()) return;
  passing_ = false;
  asked_for_.clear();
  dnsAutoT_->set_enabled(started_);
}

// No more than the look-ups can have under way, so that a scan that asks is the next one.
void DnsAutoUpdate::ask_more() {
  while (!waiting_.empty() && unanswered_ < kMostLookupsAtOnce) {
    const std::string address = std::move(waiting_.front());
    waiting_.pop_front();
    const bool asked = names_.dns_resolve(
        address, [this, address, alive = std::weak_ptr<int>(alive_)](const std::string& name) {
          if (!alive.expired()) answered(address, name);
        });
    if (asked) ++unanswered_;
  }
}

void DnsAutoUpdate::answered(const std::string& address, const std::string& name) {
  --unanswered_;
  trap(log_, "dns_auto_update: ", [&] {
    asked_for_[address] = name;
    ask_more();
  });
  next_walk_->set_enabled(true);
}

}  // namespace velmora
