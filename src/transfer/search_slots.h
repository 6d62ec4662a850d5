// The user's three searches: the query last sent from each slot, and which slot the next one goes
// to. It matches no hits.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "form/form.h"
#include "net/questions.h"

namespace velmora {

struct SearchSlot {
  std::string text;  // the search words as sent
  std::string guid;  // of the query
};

class SearchSlots : public SearchMemory {
 public:
  explicit SearchSlots(Form& form);

  std::int16_t remember_search(const std::string& text, const std::string& guid) override;
  void visit_searches(const Visit& visit) const override;

  [[nodiscard]] std::int16_t current_search() const { return current_search_; }  // 1 to 3
  void set_current_search(std::int16_t number) { current_search_ = number; }
  [[nodiscard]] const std::array<SearchSlot, 3>& search_slots() const { return search_slots_; }

 private:
  std::int16_t current_search_ = 1;
  std::array<SearchSlot, 3> search_slots_;  // slot = current_search - 1
};

}  // namespace velmora
