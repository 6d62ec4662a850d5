#include "net/cache_commands.h"

#include <algorithm>
#include <string>

namespace velmora {

CacheCommands::CacheCommands(Form& form, MessageBoxes& boxes, HostCache& cache, CacheList& list,
                             FilterArray& filter)
    : form_(form), boxes_(boxes), cache_(cache), list_(list), filter_(filter) {
  form_.clear_cache.on_click = [this] { clear_cache_Click(); };
  form_.remove_cache.on_click = [this] { remove_cache_Click(); };
  form_.cachefilter_config.on_enter = [this] { add_filter(); };
  form_.cachefilter_config.on_delete = [this](std::size_t row) { remove_filter(row); };
}

void CacheCommands::clear_cache_Click() {
  boxes_.ask("Clear Cache",
             "This will clear the cache host file.\n"
             "Make sure you have some IPs, or are connected to a host.\n"
             "Are You Sure?",
             [this, alive = std::weak_ptr<bool>(alive_)](bool yes) {
               if (!yes || alive.expired()) return;
               cache_.clear();
               list_.display_cache();
             });
}

void CacheCommands::remove_cache_Click() {
  if (cache_.rows() == 0) return;
  const std::size_t selected = form_.lcache.selected();
  cache_.remove(selected == 0 ? 1 : selected);
  list_.display_cache();
  // Several in a row can be removed one after another.
  if (selected != 0 && form_.lcache.rows() != 0) {
    form_.lcache.select(std::min(selected, form_.lcache.rows()));
  }
}

void CacheCommands::add_filter() {
  const std::string prefix = form_.cachefilter_config.text();
  if (prefix.empty()) return;
  form_.cachefilter_config.add(prefix);
  form_.cachefilter_config.set_text({});
  filter_changed();
}

void CacheCommands::remove_filter(std::size_t row) {
  form_.cachefilter_config.remove_item(row);
  filter_changed();
}

void CacheCommands::filter_changed() {
  form_.totalfilter_config.set_text(std::to_string(form_.cachefilter_config.items().size()));
  rebuild_filter_array(form_, filter_);
}

}  // namespace velmora
