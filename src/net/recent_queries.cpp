#include "net/recent_queries.h"

#include <algorithm>

#include "platform/error.h"
#include "protocol/conversions.h"

namespace velmora {

RecentQueries::RecentQueries(ListView& lview, const CheckBox& traffic_view)
    : lview_(lview), traffic_view_(traffic_view) {
  lview_.set_source(this);
}

void RecentQueries::add(std::string_view text, std::string_view guid) {
  ring_[position_].text = text;
  ring_[position_].guid = guid;
  position_ = (position_ + 1) % ring_.size();
  used_ = std::min(used_ + 1, ring_.size());
  if (traffic_view_.checked()) lview_.redraw();
}

std::string RecentQueries::cell(std::size_t row, std::size_t column) const {
  if (row < 1 || row > used_) throw PlatformError(Errc::subscript_out_of_range);
  const Entry& entry = ring_[row - 1];
  return column == 1 ? entry.text : guid_text(entry.guid);
}

}  // namespace velmora
