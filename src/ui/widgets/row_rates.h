// How fast the transfer behind each row of a list goes. It is fed with every refresh of the list
// and forgets a row as soon as its transfer runs no more. It shows nothing.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

#include "form/control.h"
#include "platform/progress.h"

namespace velmora::ui {

class RowRates {
 public:
  explicit RowRates(std::function<double()> clock) : clock_(std::move(clock)) {}

  void feed(const ListView& list);
  [[nodiscard]] double rate(const std::string& row_key) const;  // bytes a second; 0: not known

 private:
  std::function<double()> clock_;  // seconds
  std::optional<double> fed_;
  std::unordered_map<std::string, RateMeter> meters_;
};

}  // namespace velmora::ui
