// The page "View": the queries that passed by last.
#pragma once

#include "form/control.h"

namespace velmora {

struct ViewPage {
  explicit ViewPage(ControlRegistry& registry) : form_(registry) {}

 private:
  ControlRegistry& form_;
  static constexpr Page page = Page::view;

 public:
  CheckBox traffic_view{form_,
                        "traffic_view",
                        page,
                        "View traffic",
                        "Show the queries of other hosts as they pass by.",
                        true};
  ListView lview{
      form_, "lview", page, "Queries", "The last 20 queries received.", {"Query", "GUID"}};
};

}  // namespace velmora
