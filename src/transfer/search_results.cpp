#include "transfer/search_results.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "transfer/parse_filename.h"
#include "transfer/whole_file.h"

namespace velmora {

SearchResults::SearchResults(EventLoop& loop, Form& form, DebugLog& log, HostNames& names,
                             std::function<void()> on_display_delay, const Behaviour& behaviour,
                             HitFilter* filter)
    : form_(form),
      log_(log),
      names_(names),
      filter_(filter),
      on_display_delay_(std::move(on_display_delay)),
      list_(form, search_results_, behaviour),
      display_delay_(loop.make_timer(kDisplayDelayMs, [this] { display_delay_Timer(); })) {
  display_delay_->set_enabled(true);
  form_.clear_search.on_click = [this] { clear_search(); };
}

void SearchResults::set_query_reply_view(const QueryHit& hit, std::int16_t search) {
  if (form_.stop_search.checked()) return;
  trap(log_, "Error: set_query_reply_view: ", [&] {
    // Kept: every file of every hit is a result, unless the switch filter_results is on.
    if (filter_ != nullptr && filter_->on()) {
      const QueryHit kept = filter_->kept(hit);
      if (kept.results.empty()) return;
      add(kept, search);
    } else {
      add(hit, search);
    }
    list_.follow_results();
    form_.totalsearch.set_text(std::to_string(search_results_.upper_bound()));
    display_delay_->set_enabled(false);
    display_delay_->set_enabled(true);
  });
}

void SearchResults::add(const QueryHit& hit, std::int16_t search) {
  const std::size_t entries = std::min<std::size_t>(hit.hits, hit.results.size());
  std::size_t bytes = name_bytes_;
  for (std::size_t i = 0; i < entries; ++i) bytes += hit.results[i].file_name.size();
  if (bytes > kMaxSearchResultBytes) throw PlatformError(Errc::out_of_memory);

  const std::size_t first = search_results_.upper_bound() + 1;
  // Room for all of them, so that the list is never moved as it grows. Until it is used the room is
  // addresses only, not memory.
  if (first == 1) search_results_.reserve(kMaxSearchResults);
  search_results_.grow_to(first + entries - 1);
  name_bytes_ = bytes;
  const std::string port = std::to_string(unsigned_port(hit.port));
  const std::string speed = decimal_text(hit.speed);
  const std::string host_name = names_.dns_from_cache(hit.address);
  for (std::size_t i = 0; i < entries; ++i) {
    const QueryHitResult& entry = hit.results[i];
    search_result& result = search_results_.at(first + i);
    ParsedName parsed = parse_filename(entry.file_name, log_);
    result.name = std::move(parsed.name);
    result.extension = std::move(parsed.extension);
    result.frequency = std::move(parsed.frequency);
    result.bitrate = std::move(parsed.bitrate);
    result.size = decimal_text(entry.file_size);
    result.address = hit.address;
    result.port = port;
    result.file_index = to_int32(entry.file_index);
    result.speed = speed;
    std::copy_n(hit.servent_guid.begin(),
                std::min(hit.servent_guid.size(), result.servent_guid.size()),
                result.servent_guid.begin());
    result.search = search;
    result.host_name = host_name;
  }
}

void SearchResults::display_delay_Timer() {
  display_delay_->set_enabled(false);
  if (on_display_delay_) on_display_delay_();
  display_query_reply();
}

void SearchResults::display_query_reply() {
  trap(log_, "Error: display_query_reply: ", [&] { list_.redraw(); });
}

std::vector<std::size_t> SearchResults::results_of_row(std::size_t row) const {
  return list_.results_of(row, kMaxSources);
}

void SearchResults::clear_search() {
  search_results_.clear();
  name_bytes_ = 0;
  display_query_reply();
  form_.totalsearch.set_text("0");
}

}  // namespace velmora
