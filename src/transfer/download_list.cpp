#include "transfer/download_list.h"

#include <fmt/format.h>

#include "platform/number.h"
#include "transfer/result_location.h"

namespace velmora {
namespace {

std::string classic_status(const DownloadRecord& record) {
  const std::uint64_t size = record.exact_size();
  if (record.status != "Downloading" || size == 0) return record.status;
  const double percent =
      100 * static_cast<double>(record.bytes_received) / static_cast<double>(size);
  return fmt::format("{} {:.0f}%", record.status, percent);
}

// When it is tried again, and how many sources there are if there is a choice.
std::string status_text(const DownloadRecord& record) {
  std::string text = classic_status(record);
  if (!record.whole || text == "Done") return text;
  std::string more;
  if (record.whole->turn == Turn::failed) {
    more = fmt::format("again in {} min", record.whole->minutes);
  }
  if (!record.whole->others.empty()) {
    more += fmt::format("{}{} sources", more.empty() ? "" : ", ", record.whole->others.size() + 1);
  }
  return more.empty() ? text : fmt::format("{} ({})", text, more);
}

std::string other_sources(const DownloadRecord& record) {
  std::string text;
  if (!record.whole) return text;
  for (const DownloadSource& source : record.whole->others) {
    text += "\n" + source.address + ":" + source.port;
  }
  return text;
}

}  // namespace

DownloadList::DownloadList(Form& form) : form_(form) { form_.ldown.set_source(this); }

DownloadList::~DownloadList() { form_.ldown.set_source(nullptr); }

void DownloadList::redraw() { form_.ldown.redraw(); }

// A finished entry's place is taken by another file.
std::string DownloadList::row_key(std::size_t row) const {
  const DownloadRecord& record = download_list_.at(row);
  if (record.id != 0) return "#" + std::to_string(record.id);
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
             (record.server.empty() ? "" : "  " + record.server) + other_sources(record);
    default:
      return cell(row, column);
  }
}

}  // namespace velmora
