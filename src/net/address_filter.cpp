#include "net/address_filter.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmora {
namespace {

bool is_private(const std::string& entry) {
  const std::vector<std::string> ranges = private_addresses();
  return std::find(ranges.begin(), ranges.end(), entry) != ranges.end();
}

bool lies_in_private_range(std::string_view address) {
  const std::vector<std::string> ranges = private_addresses();
  return std::any_of(ranges.begin(), ranges.end(),
                     [&](const std::string& range) { return address.starts_with(range); });
}

}  // namespace

std::vector<std::string> private_addresses() {
  std::vector<std::string> ranges = {"10."};
  for (int second = 16; second <= 31; ++second) ranges.push_back(fmt::format("172.{}.", second));
  ranges.emplace_back("192.168.");
  return ranges;
}

bool is_filtered(const FilterArray& filter, std::string_view address, const Behaviour& behaviour) {
  return std::any_of(filter.begin(), filter.end(), [&](const std::string& entry) {
    return address.starts_with(entry) && !(behaviour.local_network && is_private(entry));
  });
}

bool is_filtered_for_strangers(const FilterArray& filter, std::string_view address,
                               std::string_view own_address, const Behaviour& behaviour) {
  for (const std::string_view range : {"0.", "127.", "169.254."}) {
    if (address.starts_with(range) && !own_address.starts_with(range)) return true;
  }
  return is_filtered(filter, address, lies_in_private_range(own_address) ? behaviour : kClassic);
}

void rebuild_filter_array(const Form& form, FilterArray& filter) {
  const std::vector<std::string>& items = form.cachefilter_config.items();
  filter.resize(items.size());
  for (std::size_t i = 1; i <= items.size(); ++i) filter.at(i) = items[i - 1];
}

}  // namespace velmora
