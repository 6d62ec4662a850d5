#include "transfer/result_list.h"

#include <fmt/format.h>

#include "platform/error.h"
#include "platform/number.h"
#include "transfer/result_location.h"

namespace velmora {
namespace {

constexpr std::size_t kSourcesInTooltip = 20;

std::string lower_case(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

}  // namespace

ResultList::ResultList(Form& form, const OneBased<search_result>& results,
                       const Behaviour& behaviour)
    : form_(form), results_(results), behaviour_(behaviour) {
  form_.lfound.set_source(this);
}

ResultList::~ResultList() { form_.lfound.set_source(nullptr); }

// Kept: every result is a row of its own, unless the switch filter_results is on.
void ResultList::follow_results() {
  if (!behaviour_.filter_results) {
    files_.reset();
    return;
  }
  if (!files_) files_ = std::make_unique<ResultRows>(results_);
  files_->catch_up();
}

std::vector<std::size_t> ResultList::results_of(std::size_t row, std::size_t most) const {
  if (files_) return files_->results(row, most);
  if (!results_.has(row)) throw PlatformError(Errc::subscript_out_of_range);
  return {row};
}

const search_result& ResultList::result_at(std::size_t row) const {
  return results_.at(files_ ? files_->first(row) : row);
}

std::size_t ResultList::sources(std::size_t row) const { return files_ ? files_->sources(row) : 1; }

void ResultList::redraw() {
  follow_results();
  show_dns_ = form_.show_dns.checked();
  form_.lfound.redraw();
}

std::string ResultList::sources_tooltip(std::size_t row) const {
  std::string text;
  const auto shown = results_of(row, kSourcesInTooltip);
  for (const std::size_t number : shown) {
    text += (text.empty() ? "" : "\n") + location_text(results_.at(number), show_dns_);
  }
  if (shown.size() == sources(row)) return text;
  return text + fmt::format("\nand {} more", sources(row) - shown.size());
}

// Rows never move, but after a "Clear" others stand in their places.
std::string ResultList::row_key(std::size_t row) const {
  const search_result& result = result_at(row);
  return std::to_string(row) + ' ' + result.address + ':' + result.port + ' ' +
         std::to_string(result.file_index);
}

std::string ResultList::cell(std::size_t row, std::size_t column) const {
  const search_result& result = result_at(row);
  switch (column) {
    case 1:
      return result.name;
    case 2:
      return lower_case(result.extension);
    case 3:
      return thousands(result.size);
    case 4:
      if (sources(row) > 1) return fmt::format("{} sources", sources(row));
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
  const search_result& result = result_at(row);
  if (column == 1 && result.search != 0) {
    return result.name + "   Search " + std::to_string(result.search);
  }
  if (column == 1) return result.name;
  if (column == 4 && sources(row) > 1) return sources_tooltip(row);
  if (column == 4) return location_tooltip(result, show_dns_);
  return {};
}

}  // namespace velmora
