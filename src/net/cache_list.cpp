#include "net/cache_list.h"

#include <algorithm>

#include "net/host_location.h"
#include "platform/number.h"

namespace velmora {

CacheList::CacheList(Form& form, const HostCache& cache) : form_(form), cache_(cache) {
  form_.lcache.set_source(this);
}

CacheList::~CacheList() { form_.lcache.set_source(nullptr); }

void CacheList::display_cache() {
  const double most = typed_number(form_.cachemax_config.text());
  form_.lcache.redraw(
      static_cast<std::size_t>(std::clamp(most, 0.0, static_cast<double>(kMaxCacheHosts))));
}

std::string CacheList::row_key(std::size_t row) const {
  const CacheHost& host = cache_.row(row);
  return host.address + ':' + std::to_string(unsigned_port(host.port));
}

std::string CacheList::cell(std::size_t row, std::size_t column) const {
  const CacheHost& host = cache_.row(row);
  switch (column) {
    case 1:
      return host_location_text(host.address, std::to_string(unsigned_port(host.port)),
                                host.host_name, form_.show_dns.checked());
    case 2:
      return std::to_string(host.files);
    case 3:
      return decimal_text(host.size);
    case 4:
      return std::to_string(host.hops);
    case 5:
      return std::to_string(host.ttl);
    case 6:
      return std::to_string(host.connection);
    default:
      return {};
  }
}

std::string CacheList::cell_tooltip(std::size_t row, std::size_t column) const {
  if (column != 1) return {};
  const CacheHost& host = cache_.row(row);
  return host_location_tooltip(host.address, std::to_string(unsigned_port(host.port)),
                               host.host_name, form_.show_dns.checked());
}

}  // namespace velmora
