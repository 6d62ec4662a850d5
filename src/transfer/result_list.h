// The rows of lfound: a view over the search results, one row a result, or one a file while the
// switch filter_results is on. Whether hosts are shown by
// name is settled by the last redraw.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "form/form.h"
#include "platform/behaviour.h"
#include "platform/one_based.h"
#include "transfer/result_rows.h"
#include "transfer/search_result.h"

namespace velmora {

class ResultList : public ListSource {
 public:
  ResultList(Form& form, const OneBased<search_result>& results,
             const Behaviour& behaviour = kClassic);
  ~ResultList() override;

  // Shows all results anew, with the settings of now.
  void redraw();
  // Results were added; that they are shown is left to the next redraw.
  void follow_results();

  // The results behind a row, its first one first, at most so many; outside the rows "Subscript out
  // of range".
  [[nodiscard]] std::vector<std::size_t> results_of(std::size_t row, std::size_t most) const;

  [[nodiscard]] std::size_t rows() const override {
    return files_ ? files_->rows() : results_.upper_bound();
  }
  // "Filename", "Ext", "Size", "Location", "Speed", "Freq", "BitR".
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::string row_key(std::size_t row) const override;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const override;

 private:
  [[nodiscard]] const search_result& result_at(std::size_t row) const;
  [[nodiscard]] std::size_t sources(std::size_t row) const;
  [[nodiscard]] std::string sources_tooltip(std::size_t row) const;

  Form& form_;
  const OneBased<search_result>& results_;
  const Behaviour& behaviour_;
  std::unique_ptr<ResultRows> files_;  // while the switch is on
  bool show_dns_ = false;
};

}  // namespace velmora
