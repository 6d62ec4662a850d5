// The program's memory of other servents: every host that answered with a pong, most recent first.
// At most 10,000 rows; row 1 is the host that ponged last. It knows neither its file nor its list
// on the screen. Rows count from 1 and are good until the next change, as are references to them.
// A pong costs the same however many rows there are, but for the first after they were loaded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "net/address_filter.h"
#include "net/questions.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

inline constexpr std::size_t kMaxCacheHosts = 10'000;
// The date that stands for "never": long ago, so it needs no case of its own.
inline constexpr LocalTime kNever{1899, 12, 30, 0, 0, 0};

struct CacheHost {
  std::string address;          // dotted; the key
  std::int16_t port = 0;        // two's complement
  std::string host_name = "?";  // "?" when unknown, "??" when there is no record
  std::int16_t files = 0;
  float size = 0;  // kilobytes
  std::int16_t hops = 0;
  std::int16_t ttl = 0;
  std::int16_t connection = 0;
  LocalTime date_dns = kNever;
  LocalTime date_ponged = kNever;
};

class HostCache : public PongIntake {
 public:
  // The filter is read for every pong; none of the four is owned.
  HostCache(const EventLoop& loop, const FilterArray& filter, DebugLog& log,
            const Behaviour& behaviour = kClassic);

  // The host becomes row 1, unless the filter keeps it out. Traps its errors ("Error:
  // set_cache_stat: ") and then leaves everything as it was.
  void set_cache_stat(const DescriptorHeader& header, const Pong& pong,
                      std::size_t connection) override;

  [[nodiscard]] std::size_t rows() const { return rows_; }
  // Outside the rows these raise "Subscript out of range".
  [[nodiscard]] const CacheHost& row(std::size_t row) const;
  void set_host_name(std::size_t row, std::string name);
  void set_date_dns(std::size_t row, LocalTime when);
  void remove(std::size_t row);

  // The first row with that address, 0 if none. A loaded file may hold an address twice.
  [[nodiscard]] std::size_t find(const std::string& address) const;
  void clear();
  // Row 1 comes first. More than 10,000 raise "Out of memory".
  void replace(std::vector<CacheHost> hosts);

  std::function<void()> on_change;  // after every change

 private:
  using Place = std::uint32_t;

  void index_addresses() const;
  void put_first(CacheHost host);
  void drop(Place place);
  void close_gaps();
  void make_room();
  [[nodiscard]] Place place_of(std::size_t row) const;
  [[nodiscard]] const std::vector<Place>& by_row() const;
  void changed();

  const EventLoop& loop_;
  const FilterArray& filter_;
  DebugLog& log_;
  const Behaviour& behaviour_;

  // The hosts in the order of their last pong, oldest first. A host that pongs again leaves a gap
  // behind and is put at the end; the gaps are closed once they are as many as the hosts.
  std::vector<CacheHost> places_;
  std::vector<bool> taken_;  // by place
  Place oldest_ = 0;         // no host stands before this place
  std::size_t rows_ = 0;
  // Where an address's first row stands; of loaded hosts from when one is first looked for.
  mutable std::unordered_map<std::string, Place> newest_;
  mutable bool indexed_ = true;
  mutable std::vector<Place> by_row_;  // made anew when it is asked for
  mutable bool by_row_good_ = false;
};

}  // namespace velmora
