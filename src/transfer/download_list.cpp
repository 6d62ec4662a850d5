#include "transfer/download_list.h"

#include <fmt/format.h>

#include "platform/number.h"
#include "transfer/result_location.h"

namespace velmora {
namespace {

std::string status_text(const DownloadRecord& record) {
  const std::uint64_t size = record.exact_size();
  if (record.status != "Downloading" || size == 0) return record.status;
  const double percent =
      100 * static_cast<double>(record.bytes_received) / static_cast<double>(size);
  return fmt::format("{} {:.0f}%", record.status, percent);
}

}  // namespace

DownloadList::DownloadList(Form& form) : form_(form) { form_.ldown.set_source(this); }

DownloadList::~DownloadList() { form_.ldown.set_source(nullptr); }

void DownloadList::redraw() { form_.ldown.redraw(); }

// A finished entry's place is taken by another file.
std::string DownloadList::row_key(std::size_t row) const {
  const DownloadRecord& record = download_list_.at(row);
  return std::to_string(row) + ' ' + record.address + ' ' + record.full_name();
}

std::optional<RowProgress> DownloadList::progress(std::size_t row) const {
  const DownloadRecord& record = download_list_.at(row);
  return RowProgress{static_cast<double>(record.bytes_received),
                     static_cast<double>(record.exact_size()), record.state >= 1};
}

std::string DownloadList::cell(std::size_t row, std::size_t column) const {
  const DownloadRecord& record = download_list_.at(row);
  switch (column) {
    case 1:
      return record.extension.empty() ? record.name : record.full_name();
    case 2:
      return thousands(record.size);
    case 3:
      return status_text(record);
    case 4:
      return location_text(record, form_.show_dns.checked());
    default:
      return {};
  }
}

std::string DownloadList::cell_tooltip(std::size_t row, std::size_t column) const {
  const DownloadRecord& record = download_list_.at(row);
  switch (column) {
    case 2:
      return fmt::format("{} of {} bytes received", record.bytes_received, record.exact_size());
    case 3:
      return record.message;
    case 4:
      return location_tooltip(record, form_.show_dns.checked()) +
             (record.server.empty() ? "" : "  " + record.server);
    default:
      return cell(row, column);
  }
}

}  // namespace velmora
