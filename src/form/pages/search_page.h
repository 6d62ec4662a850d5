// The page "Search": the query field, its three slots and the results.
#pragma once

#include "form/control.h"

namespace velmora {

struct SearchPage {
  explicit SearchPage(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::search;

 public:
  TextField Tsearch{form_, "Tsearch", page, "Search for", "Type words to search for & Enter key."};
  Button start_search{form_, "start_search", page, "Search",
                      "Send the search to all connected hosts."};
  CheckBox stop_search{form_, "stop_search", page, "Stop", "Ignore any more results"};
  Button clear_search{form_, "clear_search", page, "Clear", "Clear search results"};
  // Nothing reads it, on purpose, unless the switch filter_results is on.
  CheckBox filtersearch{form_, "filtersearch", page, "Filter Results",
                        "Some Clients send files that don't meet your search, this omits them."};
  OptionGroup search_num{
      form_, "search_num", page, "Search number", "Can have 3 searches at once", {"1", "2", "3"}, 1,
      1};
  Label totalsearch{
      form_, "totalsearch", page, "Total files found", "All results since the last Clear.", "0"};
  ListView lfound{form_,
                  "lfound",
                  page,
                  "Results",
                  "DoubleClick in the list will queue the file to Download.",
                  {"Filename", "Ext", "Size", "Location", "Speed", "Freq", "BitR"}};
};

}  // namespace velmora
