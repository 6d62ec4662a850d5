// The names of addresses, between the host cache that keeps them and the DNS server that knows
// them. It owns neither; names come in whatever bytes the server sent.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "net/dns_lookups.h"
#include "net/host_cache.h"
#include "net/questions.h"
#include "platform/debug_log.h"

namespace velmora {

// "?" or nothing; "??" says that there is no record.
inline bool name_is_missing(const std::string& name) { return name.size() < 2; }

class DnsNames : public HostNames {
 public:
  using Resolved = std::function<void(const std::string& name)>;

  DnsNames(HostCache& cache, DnsLookups& lookups, DebugLog& log)
      : cache_(cache), lookups_(lookups), log_(log) {}

  // Names the first cached host with the address; later ones keep theirs. Traps its errors.
  void dns_to_cache(const std::string& address, const std::string& name);

  // The name of the first cached host with the address, else "?". Traps its errors.
  // Kept: the same address twice in a row gets the first answer again, whatever the cache holds.
  std::string dns_from_cache(const std::string& address) override;

  // Looks the name up: "??" when there is no record or no answer in time, "Error resolving IP" for
  // any other failure; all but "??" go into the cache. Calls back later, once, never when it
  // returns false: no server is given or the look-up could not begin. Traps its errors.
  bool dns_resolve(const std::string& address, Resolved resolved);

 private:
  HostCache& cache_;
  DnsLookups& lookups_;
  DebugLog& log_;
  std::optional<std::string> last_address_;  // that dns_from_cache was asked for
  std::string last_answer_;
};

}  // namespace velmora
