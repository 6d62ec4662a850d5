// The list of a form's controls, by order and by name, and of those who watch them for changes. It
// owns no control: each enters itself when it is made and lives as long as its form. It is the
// part of a form that needs no control's name at compile time.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "form/control.h"

namespace velmora {

class ControlRegistry {
 public:
  using Watcher = std::function<void(Control&)>;

  ControlRegistry() = default;
  ControlRegistry(const ControlRegistry&) = delete;
  ControlRegistry& operator=(const ControlRegistry&) = delete;

  [[nodiscard]] Control* find(std::string_view name) const;          // null when there is none
  void for_each(const std::function<void(Control&)>& action) const;  // in order of declaration
  void visit(ControlVisitor& visitor) const;

  // A watcher is told of every change of a control, inside the call that made it: it takes note
  // and raises nothing. It may watch and unwatch, also itself. Returns the id for unwatch.
  int watch(Watcher watcher);
  void unwatch(int id);

 private:
  friend class Control;
  void add(Control& control);
  void changed(Control& control);

  std::vector<Control*> controls_;
  std::unordered_map<std::string_view, Control*> by_name_;
  std::vector<std::pair<int, std::shared_ptr<Watcher>>> watchers_;
  int last_id_ = 0;
  int telling_ = 0;  // how many changes are being told, one inside the other
};

}  // namespace velmora
