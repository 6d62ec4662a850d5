#include "form/control_registry.h"

#include <algorithm>

namespace velmora {

Control* ControlRegistry::find(std::string_view name) const {
  const auto found = by_name_.find(name);
  return found == by_name_.end() ? nullptr : found->second;
}

void ControlRegistry::for_each(const std::function<void(Control&)>& action) const {
  for (Control* control : controls_) action(*control);
}

void ControlRegistry::visit(ControlVisitor& visitor) const {
  for (Control* control : controls_) control->accept(visitor);
}

int ControlRegistry::watch(Watcher watcher) {
  watchers_.emplace_back(++last_id_, std::make_shared<Watcher>(std::move(watcher)));
  return last_id_;
}

void ControlRegistry::unwatch(int id) {
  const auto found = std::find_if(watchers_.begin(), watchers_.end(),
                                  [id](const auto& watcher) { return watcher.first == id; });
  if (found == watchers_.end()) return;
  // While a change is being told the places must not move.
  if (telling_ > 0) {
    found->second.reset();
  } else {
    watchers_.erase(found);
  }
}

void ControlRegistry::add(Control& control) {
  controls_.push_back(&control);
  by_name_.emplace(control.name(), &control);
}

void ControlRegistry::changed(Control& control) {
  if (watchers_.empty()) return;
  ++telling_;
  const std::size_t count = watchers_.size();
  for (std::size_t i = 0; i < count; ++i) {
    const std::shared_ptr<Watcher> watcher = watchers_[i].second;  // it may unwatch itself
    if (watcher) (*watcher)(control);
  }
  if (--telling_ == 0) {
    std::erase_if(watchers_, [](const auto& watcher) { return !watcher.second; });
  }
}

}  // namespace velmora
