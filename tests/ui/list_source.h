// A list of the form over rows that a test writes: the first cell is the row's key.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "form/control_registry.h"

namespace velmora::ui {

struct ScriptedList : ListSource {
  explicit ScriptedList(std::vector<std::string> columns)
      : view(registry, "lfound", Page::search, "Results", "What was <b>found</b>.",
             std::move(columns)) {
    view.set_source(this);
  }

  void show(std::vector<std::vector<std::string>> cells) {
    table = std::move(cells);
    view.redraw();
  }

  [[nodiscard]] std::size_t rows() const override { return table.size(); }
  [[nodiscard]] std::string row_key(std::size_t row) const override { return table.at(row - 1)[0]; }
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override {
    return table.at(row - 1).at(column - 1);
  }
  [[nodiscard]] std::string cell_tooltip(std::size_t, std::size_t) const override {
    return "<i>tip</i>";
  }
  [[nodiscard]] std::optional<RowProgress> progress(std::size_t row) const override {
    return row == 1 ? transfer : std::nullopt;
  }

  ControlRegistry registry;
  ListView view;
  std::vector<std::vector<std::string>> table;
  std::optional<RowProgress> transfer;  // of row 1
};

}  // namespace velmora::ui
