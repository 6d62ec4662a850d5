#include "transfer/search_slots.h"

#include "platform/error.h"
#include "platform/number.h"

namespace velmora {

SearchSlots::SearchSlots(Form& form) {
  form.search_num.on_choose = [this, &form] {
    current_search_ = to_int16(form.search_num.chosen());
  };
}

std::int16_t SearchSlots::remember_search(const std::string& text, const std::string& guid) {
  const auto slot = static_cast<std::size_t>(current_search_ - 1);
  if (slot >= search_slots_.size()) throw PlatformError(Errc::subscript_out_of_range);
  search_slots_[slot] = {text, guid};
  return current_search_;
}

void SearchSlots::visit_searches(const Visit& visit) const {
  for (std::size_t i = 0; i < search_slots_.size(); ++i) {
    const SearchSlot& slot = search_slots_[i];
    if (!slot.guid.empty()) visit(static_cast<std::int16_t>(i + 1), slot.text, slot.guid);
  }
}

}  // namespace velmora
