// The rows of lfound: a view over the search results, one row a result. Whether hosts are shown by
// name is settled by the last redraw.
#pragma once

#include <string>

#include "form/form.h"
#include "platform/one_based.h"
#include "transfer/search_result.h"

namespace velmora {

class ResultList : public ListSource {
 public:
  ResultList(Form& form, const OneBased<search_result>& results);
  ~ResultList() override;

  // Shows all results anew, with the settings of now.
  void redraw();

  [[nodiscard]] std::size_t rows() const override { return results_.upper_bound(); }
  // "Filename", "Ext", "Size", "Location", "Speed", "Freq", "BitR".
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::string row_key(std::size_t row) const override;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const override;

 private:
  Form& form_;
  const OneBased<search_result>& results_;
  bool show_dns_ = false;
};

}  // namespace velmora
