#include "transfer/result_list.h"

#include "platform/number.h"
#include "transfer/result_location.h"

namespace velmora {
namespace {

std::string lower_case(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

}  // namespace

ResultList::ResultList(Form& form, const OneBased<search_result>& results)
    : form_(form), results_(results) {
  form_.lfound.set_source(this);
}

ResultList::~ResultList() { form_.lfound.set_source(nullptr); }

void ResultList::redraw() {
  show_dns_ = form_.show_dns.checked();
  form_.lfound.redraw();
}

// Rows never move, but after a "Clear" others stand in their places.
std::string ResultList::row_key(std::size_t row) const {
  const search_result& result = results_.at(row);
  return std::to_string(row) + ' ' + result.address + ':' + result.port + ' ' +
         std::to_string(result.file_index);
}

std::string ResultList::cell(std::size_t row, std::size_t column) const {
  const search_result& result = results_.at(row);
  switch (column) {
    case 1:
      return result.name;
    case 2:
      return lower_case(result.extension);
    case 3:
      return thousands(result.size);
    case 4:
      return location_text(result, show_dns_);
    case 5:
      return thousands(result.speed);
    case 6:
      return thousands(result.frequency);
    case 7:
      return thousands(result.bitrate);
    default:
      return {};
  }
}

std::string ResultList::cell_tooltip(std::size_t row, std::size_t column) const {
  const search_result& result = results_.at(row);
  if (column == 1 && result.search != 0) {
    return result.name + "   Search " + std::to_string(result.search);
  }
  if (column == 1) return result.name;
  if (column == 4) return location_tooltip(result, show_dns_);
  return {};
}

}  // namespace velmora
