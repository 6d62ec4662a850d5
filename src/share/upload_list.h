// The upload list as it is shown: one row per upload slot.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "form/form.h"
#include "platform/one_based.h"
#include "share/upload_slot.h"

namespace velmora {

class UploadList : public ListSource {
 public:
  UploadList(const OneBased<UploadSlot>& slots, const Form& form) : slots_(slots), form_(form) {}

  [[nodiscard]] std::size_t rows() const override { return slots_.upper_bound(); }
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::string row_key(std::size_t row) const override;
  [[nodiscard]] std::optional<RowProgress> progress(std::size_t row) const override;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const override;

 private:
  const OneBased<UploadSlot>& slots_;
  const Form& form_;
};

}  // namespace velmora
