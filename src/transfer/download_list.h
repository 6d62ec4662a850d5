// The downloads that the user queued, and the rows of ldown as a view over them. Entries are never
// removed; a finished one is taken by the next queueing (the switch whole_files moves and removes
// them). It starts nothing itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "form/form.h"
#include "platform/one_based.h"
#include "transfer/download_record.h"

namespace velmora {

inline constexpr std::size_t kMaxDownloads = 10'000;

class DownloadList : public ListSource {
 public:
  explicit DownloadList(Form& form);
  ~DownloadList() override;

  [[nodiscard]] OneBased<DownloadRecord>& download_list() { return download_list_; }
  [[nodiscard]] const OneBased<DownloadRecord>& download_list() const { return download_list_; }

  // For an entry's id: never 0, never the same again.
  [[nodiscard]] std::uint64_t next_id() { return ++last_id_; }

  // Shows the entries anew; called after every change of one.
  void redraw();

  [[nodiscard]] std::size_t rows() const override { return download_list_.upper_bound(); }
  // "Filename", "Size", "Status" (with the percentage while it is downloading), "Location". The
  // tool-tips tell the bytes received and what the other side said.
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::string row_key(std::size_t row) const override;
  [[nodiscard]] std::optional<RowProgress> progress(std::size_t row) const override;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const override;

 private:
  Form& form_;
  OneBased<DownloadRecord> download_list_{kMaxDownloads};
  std::uint64_t last_id_ = 0;
};

}  // namespace velmora
