// The address filter: a host whose address begins with one of its entries stays out of the cache.
// Plain text matching, so that "10.0.0.1" keeps 10.0.0.12 out as well. It is a copy of the entries
// of the drop-down list cachefilter_config, which is the setting.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "form/form.h"
#include "platform/behaviour.h"
#include "platform/one_based.h"

namespace velmora {

using FilterArray = OneBased<std::string>;

// The ranges that no host outside a private network has; a filter begins with these.
std::vector<std::string> private_addresses();

// The entries for private addresses do not count while servents of the local network are wanted.
bool is_filtered(const FilterArray& filter, std::string_view address,
                 const Behaviour& behaviour = kClassic);

// The same for an address that a stranger wants this servent to connect to. It must not reach the
// own machine or link unless the servent itself has such an address, and the entries for private
// addresses always count unless the servent's own is private.
bool is_filtered_for_strangers(const FilterArray& filter, std::string_view address,
                               std::string_view own_address, const Behaviour& behaviour);

// Copies the filter list into the array.
void rebuild_filter_array(const Form& form, FilterArray& filter);

}  // namespace velmora
