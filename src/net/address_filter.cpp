#include "net/address_filter.h"

#include <algorithm>

namespace velmora {

bool is_filtered(const FilterArray& filter, std::string_view address) {
  return std::any_of(filter.begin(), filter.end(),
                     [&](const std::string& entry) { return address.starts_with(entry); });
}

void rebuild_filter_array(const Form& form, FilterArray& filter) {
  const std::vector<std::string>& items = form.cachefilter_config.items();
  filter.resize(items.size());
  for (std::size_t i = 1; i <= items.size(); ++i) filter.at(i) = items[i - 1];
}

}  // namespace velmora
