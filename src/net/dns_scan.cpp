#include "net/dns_scan.h"

#include <fmt/format.h>

#include "net/dns_names.h"
#include "platform/local_time.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr int kStepMs = 500;
constexpr int kAfterTimeoutMs = 3000;
constexpr int kNameIsGoodDays = 10;
constexpr int kMostRetries = 4;
const char* const kTrapPrefix = "dnsTimer: ";

}  // namespace

DnsScan::DnsScan(EventLoop& loop, Form& form, HostCache& cache, DnsLookups& lookups, DebugLog& log)
    : loop_(loop),
      form_(form),
      cache_(cache),
      lookups_(lookups),
      log_(log),
      dnsTimer_(loop.make_timer(kStepMs, [this] { dnsTimer_Timer(); })) {
  form_.StartDNS.on_click = [this] { start(); };
  form_.stopDNS.on_click = [this] { stop(); };
}

void DnsScan::start() {
  dns_stop_ = false;
  if (!lookups_.server_given()) return form_.dnsStat.set_text(form_.dns_ser.tooltip());
  if (!asking_) dnsTimer_->set_enabled(true);
}

void DnsScan::dnsTimer_Timer() {
  dnsTimer_->set_interval(kStepMs);
  dnsTimer_->set_enabled(false);
  trap(log_, kTrapPrefix, [&] {
    find_row();
    if (dns_stop_ || cursor_ > cache_.rows()) {
      form_.dnsStat.set_text(fmt::format("{} IPs on the last scan. Done!", resolved_));
      cursor_ = 1;
      resolved_ = 0;
      return;
    }
    if (!lookups_.server_given()) return form_.dnsStat.set_text(form_.dns_ser.tooltip());
    const std::string address = cache_.row(cursor_).address;
    show_row(address, "Waiting for DNS server...");
    form_.dns_progress.show(fmt::format("{} of {} hosts, {}", cursor_, cache_.rows(), address),
                            cursor_ - 1, cache_.rows());
    lookups_.ask(address, [this, address](const DnsAnswer& answer) { answered(address, answer); });
    asking_ = true;
  });
  if (!asking_) form_.dns_progress.finish();
}

// The cursor becomes the first row from it on that is to be asked for, or one past the last row.
void DnsScan::find_row() {
  const LocalTime cutoff = days_before(loop_.local_time(), kNameIsGoodDays);
  if (cursor_ == 0) cursor_ = 1;
  for (; cursor_ <= cache_.rows(); ++cursor_) {
    const CacheHost& host = cache_.row(cursor_);
    if (name_is_missing(host.host_name) || host.date_dns <= cutoff) return;
  }
}

void DnsScan::answered(const std::string& address, const DnsAnswer& answer) {
  asking_ = false;
  trap(log_, kTrapPrefix, [&] {
    if (!judge(address, answer)) return;
    if (const std::size_t row = row_of(address); row != 0) {
      if (answer.outcome() == DnsOutcome::name) cache_.set_host_name(row, answer.name);
      if (name_is_missing(cache_.row(row).host_name)) cache_.set_host_name(row, "??");
      cache_.set_date_dns(row, loop_.local_time());
    }
    ++cursor_;
    dnsTimer_->set_enabled(true);
  });
  if (!dnsTimer_->enabled()) form_.dns_progress.finish();
}

// Shows the outcome and counts it; false when it ends the scan.
bool DnsScan::judge(const std::string& address, const DnsAnswer& answer) {
  switch (answer.outcome()) {
    case DnsOutcome::name:
      ++resolved_;
      retries_ = 0;
      show_row(address, answer.name);
      return true;
    case DnsOutcome::no_record:
      show_row(address, "-- No DNS record --");
      return true;
    case DnsOutcome::timed_out:
      // Kept: only a success sets the count back, so that a new start may end at its first
      // time-out.
      if (retries_ >= kMostRetries) break;
      ++retries_;
      form_.dnsStat.set_text(
          fmt::format("Skipping IP, trying next IP {} {}", retries_, answer.description));
      dnsTimer_->set_interval(kAfterTimeoutMs);
      return true;
    case DnsOutcome::failed:
      break;
  }
  form_.dnsStat.set_text(fmt::format("{} {}", answer.description, answer.number));
  return false;
}

void DnsScan::show_row(const std::string& address, const std::string& outcome) {
  form_.dnsStat.set_text("Resolving IP: " + address + '\r' + outcome +
                         fmt::format("\rNum: {} of {}", cursor_, cache_.rows()));
}

// The rows may have moved since the question; an address may be there twice.
std::size_t DnsScan::row_of(const std::string& address) const {
  if (cursor_ <= cache_.rows() && cache_.row(cursor_).address == address) return cursor_;
  return cache_.find(address);
}

}  // namespace velmora
