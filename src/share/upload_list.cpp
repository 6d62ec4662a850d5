#include "share/upload_list.h"

#include <fmt/format.h>

#include "platform/number.h"

namespace velmora {
namespace {

enum Column : std::size_t { kFilename = 1, kSize, kStatus, kLocation };

bool name_known(const UploadSlot& slot) { return slot.host_name.size() >= 3; }

// While the file is being sent, with the part of it that lies behind.
std::string status_text(const UploadSlot& slot) {
  if (slot.state == UploadState::none || slot.file_size <= 0) return slot.status;
  return fmt::format("{} {}%", slot.status, std::int64_t{slot.position} * 100 / slot.file_size);
}

}  // namespace

std::string UploadList::row_key(std::size_t row) const {
  const UploadSlot& slot = slots_.at(row);
  return std::to_string(row) + ' ' + slot.address + ' ' + slot.file_name;
}

std::optional<RowProgress> UploadList::progress(std::size_t row) const {
  const UploadSlot& slot = slots_.at(row);
  return RowProgress{static_cast<double>(slot.position), static_cast<double>(slot.file_size),
                     slot.state != UploadState::none};
}

std::string UploadList::cell(std::size_t row, std::size_t column) const {
  const UploadSlot& slot = slots_.at(row);
  switch (column) {
    case kFilename:
      return slot.file_name;
    case kSize:
      return thousands(static_cast<double>(slot.file_size));
    case kStatus:
      return status_text(slot);
    case kLocation:
      return form_.show_dns.checked() && name_known(slot) ? slot.host_name : slot.address;
    default:
      throw PlatformError(Errc::subscript_out_of_range);
  }
}

std::string UploadList::cell_tooltip(std::size_t row, std::size_t column) const {
  const UploadSlot& slot = slots_.at(row);
  if (column == kFilename) return slot.file_name;
  if (column == kLocation && name_known(slot)) return slot.host_name + "   " + slot.address;
  return {};
}

}  // namespace velmora
