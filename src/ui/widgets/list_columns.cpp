#include "ui/widgets/list_columns.h"

#include <algorithm>
#include <array>

namespace velmora::ui {
namespace {

constexpr std::array kColumns = {
    ListColumn{"Filename", 40, false},
    ListColumn{"Query", 40, false},
    ListColumn{"GUID", 48, false},
    ListColumn{"Hosts", 32, false},
    ListColumn{"Location", 20, false},
    ListColumn{kStatusColumn, 34, false},
    ListColumn{"Stat", 16, false},
    ListColumn{"Dir", 6, false},
    ListColumn{"Sent/Recv/Drop", 18, true},
    ListColumn{"Size", 13, true},
    ListColumn{"Size Kb", 13, true},
    ListColumn{"Files", 9, true},
    ListColumn{"Speed", 9, true},
    ListColumn{"Freq", 9, true},
    ListColumn{"BitR", 10, true},
    ListColumn{"Hop", 6, true},
    ListColumn{"TTL", 6, true},
    ListColumn{"Sock", 7, true},
    ListColumn{"Lport", 8, true},
    ListColumn{"Buff", 9, true},
    ListColumn{"Ext", 7, false},
};

}  // namespace

ListColumn list_column(std::string_view caption) {
  const auto* known = std::find_if(kColumns.begin(), kColumns.end(),
                                   [&](const ListColumn& c) { return c.caption == caption; });
  if (known != kColumns.end()) return *known;
  return {caption, static_cast<int>(caption.size()) + 4, false};
}

}  // namespace velmora::ui
