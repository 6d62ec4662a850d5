// The traffic counters as a servent's window shows them, in the shape of the model's expectation.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "form/form.h"

namespace velmora::model {

inline std::vector<std::pair<std::string, std::string>> shown_labels(const Form& form) {
  std::vector<std::pair<std::string, std::string>> labels;
  for (const Label* label :
       {&form.net_stat, &form.bytein_stat, &form.byteout_stat, &form.drop_stat, &form.route_stat,
        &form.ping_stat, &form.myping_stat, &form.pong_stat, &form.mypong_stat, &form.search_stat,
        &form.reply_stat, &form.push_stat, &form.unknown_stat}) {
    labels.emplace_back(label->name(), label->text());
  }
  return labels;
}

inline std::vector<std::string> shown_host_counts(const Form& form) {
  std::vector<std::string> counts;
  for (std::size_t row = 1; row <= form.lHosts.rows(); ++row) {
    counts.push_back(form.lHosts.cell(row, 3));
  }
  return counts;
}

}  // namespace velmora::model
