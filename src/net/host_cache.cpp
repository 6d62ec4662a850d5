#include "net/host_cache.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

CacheHost host_of(const DescriptorHeader& header, const Pong& pong, std::size_t connection) {
  CacheHost host;
  host.address = pong.address;
  host.port = pong.port;
  host.files = to_int16(pong.files);
  host.size = pong.kilobytes;
  host.hops = header.hops;
  host.ttl = header.ttl;
  host.connection = to_int16(static_cast<double>(connection));
  return host;
}

}  // namespace

HostCache::HostCache(const EventLoop& loop, const FilterArray& filter, DebugLog& log,
                     const Behaviour& behaviour)
    : loop_(loop), filter_(filter), log_(log), behaviour_(behaviour) {}

void HostCache::set_cache_stat(const DescriptorHeader& header, const Pong& pong,
                               std::size_t connection) {
  trap(log_, "Error: set_cache_stat: ", [&] {
    if (is_filtered(filter_, pong.address, behaviour_)) return;
    // Everything that can fail to convert does so before any row moves.
    CacheHost host = host_of(header, pong, connection);
    host.date_ponged = loop_.local_time();
    index_addresses();
    make_room();
    if (const auto known = newest_.find(host.address); known != newest_.end()) {
      CacheHost& before = places_[known->second];
      host.host_name = std::move(before.host_name);
      host.date_dns = before.date_dns;
      before = {};
      taken_[known->second] = false;
      --rows_;
    }
    put_first(std::move(host));
    if (rows_ > kMaxCacheHosts) {
      while (!taken_[oldest_]) ++oldest_;
      drop(oldest_);
    }
    changed();
  });
}

const CacheHost& HostCache::row(std::size_t row) const { return places_[place_of(row)]; }

void HostCache::set_host_name(std::size_t row, std::string name) {
  places_[place_of(row)].host_name = std::move(name);
  if (on_change) on_change();
}

void HostCache::set_date_dns(std::size_t row, LocalTime when) {
  places_[place_of(row)].date_dns = when;
  if (on_change) on_change();
}

void HostCache::remove(std::size_t row) {
  index_addresses();
  drop(place_of(row));
  changed();
}

std::size_t HostCache::find(const std::string& address) const {
  index_addresses();
  const auto known = newest_.find(address);
  if (known == newest_.end()) return 0;
  // The places of the rows go down.
  const std::vector<Place>& places = by_row();
  const auto at = std::lower_bound(places.begin(), places.end(), known->second, std::greater<>{});
  return static_cast<std::size_t>(at - places.begin()) + 1;
}

void HostCache::clear() { replace({}); }

void HostCache::replace(std::vector<CacheHost> hosts) {
  if (hosts.size() > kMaxCacheHosts) throw PlatformError(Errc::out_of_memory);
  taken_.assign(hosts.size(), true);
  std::reverse(hosts.begin(), hosts.end());
  newest_.clear();
  indexed_ = hosts.empty();
  rows_ = hosts.size();
  places_ = std::move(hosts);
  oldest_ = 0;
  changed();
}

// Not when they are loaded, so that the program starts sooner: nobody looks for one before a pong.
void HostCache::index_addresses() const {
  if (indexed_) return;
  newest_.clear();
  newest_.reserve(rows_);
  for (std::size_t place = oldest_; place < places_.size(); ++place) {
    if (taken_[place]) newest_[places_[place].address] = static_cast<Place>(place);
  }
  indexed_ = true;
}

void HostCache::put_first(CacheHost host) {
  constexpr std::size_t kFewGaps = 64;
  if (places_.size() >= 2 * rows_ + kFewGaps) close_gaps();
  make_room();
  newest_[host.address] = static_cast<Place>(places_.size());
  places_.push_back(std::move(host));
  taken_.push_back(true);
  ++rows_;
}

// For one more place, before anything moves: what comes behind it cannot fail half-way.
void HostCache::make_room() {
  constexpr std::size_t kFewPlaces = 64;
  const std::size_t wanted = 2 * places_.size() + kFewPlaces;
  if (taken_.capacity() == places_.size()) taken_.reserve(wanted);
  if (places_.capacity() == places_.size()) places_.reserve(wanted);
}

void HostCache::drop(Place place) {
  const std::string address = std::exchange(places_[place], {}).address;
  taken_[place] = false;
  --rows_;
  const auto known = newest_.find(address);
  if (known->second != place) return;
  Place older = place;
  while (older > oldest_) {
    --older;
    if (taken_[older] && places_[older].address == address) {
      known->second = older;
      return;
    }
  }
  newest_.erase(known);
}

void HostCache::close_gaps() {
  Place to = 0;
  for (Place from = oldest_; from < places_.size(); ++from) {
    if (!taken_[from]) continue;
    // From old to new, so that an address that is there twice ends at its newest place.
    newest_[places_[from].address] = to;
    if (to != from) places_[to] = std::move(places_[from]);
    ++to;
  }
  places_.resize(rows_);
  taken_.assign(rows_, true);
  oldest_ = 0;
}

HostCache::Place HostCache::place_of(std::size_t row) const {
  if (row < 1 || row > rows_) throw PlatformError(Errc::subscript_out_of_range);
  return by_row()[row - 1];
}

const std::vector<HostCache::Place>& HostCache::by_row() const {
  if (by_row_good_) return by_row_;
  by_row_.clear();
  by_row_.reserve(rows_);
  for (std::size_t place = places_.size(); by_row_.size() < rows_;) {
    if (taken_[--place]) by_row_.push_back(static_cast<Place>(place));
  }
  by_row_good_ = true;
  return by_row_;
}

void HostCache::changed() {
  by_row_good_ = false;
  if (on_change) on_change();
}

}  // namespace velmora
