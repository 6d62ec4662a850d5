// What the check box filtersearch does under the switch filter_results: it leaves out of a query
// hit the files whose names do not hold every word of the search that the hit answers, as sharing
// looks for words. It owns the words of the three searches; slots, form and switches are not owned.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "form/form.h"
#include "net/questions.h"
#include "platform/behaviour.h"
#include "transfer/search_slots.h"

namespace velmora {

class HitFilter {
 public:
  HitFilter(const Form& form, const SearchSlots& slots, const Behaviour& behaviour)
      : form_(form), slots_(slots), behaviour_(behaviour) {}

  [[nodiscard]] bool on() const {
    return behaviour_.filter_results && form_.filtersearch.checked();
  }
  // The hit without what is left out. While no search was made nothing is.
  QueryHit kept(const QueryHit& hit);

 private:
  struct Words {
    std::string text;  // of the search
    std::vector<std::string> words;
  };

  void choose_words(const QueryHit& hit);
  [[nodiscard]] bool meets_a_search(std::string_view name);

  const Form& form_;
  const SearchSlots& slots_;
  const Behaviour& behaviour_;
  std::array<Words, 3> words_;
  std::vector<const Words*> asked_;  // of the searches that the hit may answer
  std::string upper_;                // the name that is looked at
};

}  // namespace velmora
