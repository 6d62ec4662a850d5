// The running servent as the verbs see it: its controls by name, over the control socket. What it
// answers is checked for its shape here, so that verbs work with plain texts and rows.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/rpc_client.h"

namespace velmora::cli {

// Rows of a list view as it shows them. Rows count from 1, in the list and here.
struct List {
  std::vector<std::string> columns;
  std::size_t total = 0;  // rows of the whole list
  std::size_t first = 1;  // the list's number of rows[0]
  std::vector<std::vector<std::string>> rows;

  // The cell of rows[index] under this heading; empty when there is none.
  [[nodiscard]] std::string cell(std::size_t index, std::string_view column) const;
};

struct ControlFacts {
  std::string name;
  std::string kind;
  std::string page;
  std::string caption;
  std::string tooltip;
  bool enabled = true;
};

class Servent {
 public:
  explicit Servent(RpcClient& client) : client_(client) {}
  [[nodiscard]] RpcClient& client() { return client_; }

  std::vector<ControlFacts> controls();
  nlohmann::json value(const std::string& control);
  std::string text(const std::string& control);
  // The same, or the fallback where the servent has no such control.
  std::string text_or(const std::string& control, const std::string& fallback);
  std::vector<std::string> items(const std::string& control);  // of a combo list
  // At most `most` rows from `first` on, fetched a page at a time.
  List list(const std::string& control, std::size_t first = 1,
            std::size_t most = static_cast<std::size_t>(-1));

  void set(const std::string& control, nlohmann::json value);
  void press(const std::string& control);
  void enter(const std::string& control, const std::string& text);
  void act_on_row(std::string_view method, const std::string& control, std::size_t row);

  // Tells of changes of these controls from now on.
  void subscribe(const std::vector<std::string>& controls);
  // Asks `done` now and after every change, until it says true or the deadline has passed.
  bool wait_until(Clock::time_point deadline, const std::function<bool()>& done);
  // Lets time pass until then; changes on the way are dropped.
  void pass(Clock::time_point until);

 private:
  RpcClient& client_;
};

}  // namespace velmora::cli
