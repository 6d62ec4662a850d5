#include "cli/table.h"

#include <algorithm>
#include <numeric>

#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr std::size_t kGap = 2;        // blanks between two columns
constexpr std::size_t kNarrowest = 8;  // a column is not cut below this

bool is_number_or_empty(const std::string& cell) {
  return cell.find_first_not_of("0123456789,.") == std::string::npos;
}

std::string line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths,
                 const std::vector<bool>& numbers) {
  std::string out;
  for (std::size_t column = 0; column < cells.size(); ++column) {
    if (column > 0) out.append(kGap, ' ');
    out += padded(cut_to(cells[column], widths[column]), widths[column], numbers[column]);
  }
  out.erase(out.find_last_not_of(' ') + 1);
  return out + "\n";
}

}  // namespace

Table::Table(std::vector<std::string> headings)
    : headings_(std::move(headings)), numbers_(headings_.size(), true) {
  for (std::string& heading : headings_) heading = visible(heading);
}

void Table::add(const std::vector<std::string>& cells) {
  std::vector<std::string> row(headings_.size());
  for (std::size_t column = 0; column < std::min(row.size(), cells.size()); ++column) {
    row[column] = visible(cells[column]);
    if (!is_number_or_empty(row[column])) numbers_[column] = false;
  }
  rows_.push_back(std::move(row));
}

std::vector<std::size_t> Table::widths(std::size_t width) const {
  std::vector<std::size_t> result;
  for (std::size_t column = 0; column < headings_.size(); ++column) {
    std::size_t widest = columns(headings_[column]);
    for (const auto& row : rows_) widest = std::max(widest, columns(row[column]));
    result.push_back(widest);
  }
  if (width == 0 || result.empty()) return result;
  std::size_t sum = std::accumulate(result.begin(), result.end(), kGap * (result.size() - 1));
  while (sum > width) {
    const auto widest = std::max_element(result.begin(), result.end());
    if (*widest <= kNarrowest) break;
    --*widest;
    --sum;
  }
  return result;
}

std::string Table::text(std::size_t width) const {
  const std::vector<std::size_t> by_column = widths(width);
  std::string out = line(headings_, by_column, numbers_);
  for (const auto& row : rows_) out += line(row, by_column, numbers_);
  return out;
}

}  // namespace velmora::cli
