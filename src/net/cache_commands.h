// What a person does to the host cache: the buttons clear_cache and remove_cache, and the entries
// of the address filter in cachefilter_config. It wires these controls and owns nothing.
#pragma once

#include <cstddef>
#include <memory>

#include "form/form.h"
#include "net/address_filter.h"
#include "net/cache_list.h"
#include "net/host_cache.h"
#include "platform/message_boxes.h"

namespace velmora {

class CacheCommands {
 public:
  CacheCommands(Form& form, MessageBoxes& boxes, HostCache& cache, CacheList& list,
                FilterArray& filter);

 private:
  void clear_cache_Click();
  void remove_cache_Click();
  void add_filter();
  void remove_filter(std::size_t row);
  void filter_changed();

  Form& form_;
  MessageBoxes& boxes_;
  HostCache& cache_;
  CacheList& list_;
  FilterArray& filter_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  // what a late answer asks
};

}  // namespace velmora
