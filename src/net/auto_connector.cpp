#include "net/auto_connector.h"

#include <algorithm>

#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr int kFindAlive_ms = 5000;
// A larger batch goes on in the next turns of the loop.
constexpr std::size_t kAttemptsATurn = 64;

}  // namespace

AutoConnector::AutoConnector(EventLoop& loop, Form& form, DebugLog& log,
                             MessageConnections& connections, const HostCache& cache)
    : loop_(loop),
      form_(form),
      log_(log),
      connections_(connections),
      cache_(cache),
      find_alive_(loop.make_timer(kFindAlive_ms, [this] { find_alive_Timer(); })) {
  form_.connect_auto.on_click = [this] { connect_auto_Click(); };
}

void AutoConnector::stop() {
  batch_.reset();
  find_alive_->set_enabled(false);
  form_.connect_auto.set_enabled(true);
}

void AutoConnector::connect_auto_Click() {
  form_.connect_auto.set_enabled(false);
  find_alive_Timer();
}

// A limit beyond 16 bits overflows.
void AutoConnector::find_alive_Timer() {
  run([&] {
    const std::int16_t most = to_int16(typed_number(form_.max_out_host.text()));
    Find_alive_hosts(most, most);
  });
}

// An error stops the connector, or the button would stay disabled for good.
void AutoConnector::run(const std::function<void()>& step) {
  if (!trap(log_, "Find_alive_hosts: ", step)) stop();
}

std::size_t AutoConnector::connected_count() const {
  std::size_t count = 0;
  for (const ConnectionSlot& slot : connections_.connection_slots()) {
    if (slot.state == kConnected) ++count;
  }
  return count;
}

// Kept: a limit met by incoming connections ends it too, the last row alone is never tried, and a
// batch is as large as the limit however few connections are missing.
void AutoConnector::Find_alive_hosts(std::int16_t batch, std::int16_t limit) {
  find_alive_->set_enabled(false);
  const std::size_t rows = cache_.rows();
  if (cache_cursor_ == 0) cache_cursor_ = 1;
  // A limit of 0 or below is met by no connection at all, so a batch is at least 1 from here on.
  const bool enough = limit <= 0 || connected_count() >= static_cast<std::size_t>(limit);
  if (enough || cache_cursor_ >= rows) {
    cache_cursor_ = 1;
    stop();
    return;
  }
  auto count = static_cast<std::size_t>(batch);
  if (cache_cursor_ + count > rows) cache_cursor_ = 1;
  if (cache_cursor_ + count > rows) count = 1;
  batch_ = std::make_shared<Batch>(Batch{cache_cursor_, cache_cursor_ + count});
  // Kept: one row is skipped after every batch.
  cache_cursor_ += count + 1;
  go_on(*batch_);
}

void AutoConnector::go_on(Batch& batch) {
  // The cache may have become shorter since the last turn.
  const std::size_t end = std::min(batch.end, cache_.rows() + 1);
  for (std::size_t i = 0; i < kAttemptsATurn && batch.row < end; ++i, ++batch.row) {
    const CacheHost host = cache_.row(batch.row);
    // What could not be started is not reported: the next batch goes on.
    connections_.connect_out(host.address, host.port, host.host_name);
  }
  if (batch.row >= end) {
    find_alive_->set_enabled(true);
    return;
  }
  loop_.post([this, rest = std::weak_ptr<Batch>(batch_)] {
    if (const auto left = rest.lock()) run([&] { go_on(*left); });
  });
}

}  // namespace velmora
