#include "transfer/result_location.h"

namespace velmora {
namespace {

bool shown_by_name(const search_result& result, bool show_dns) {
  return show_dns && result.host_name.size() >= 3;
}

std::string by_address(const search_result& result) { return result.address + ":" + result.port; }

}  // namespace

std::string location_text(const search_result& result, bool show_dns) {
  if (shown_by_name(result, show_dns)) return result.host_name + ":" + result.port;
  return by_address(result);
}

std::string location_tooltip(const search_result& result, bool show_dns) {
  if (shown_by_name(result, show_dns)) return result.host_name + "   " + by_address(result);
  if (result.host_name.size() < 2) return "Didn't resolve yet";
  if (result.host_name.size() == 2) return "Unresolved";
  return by_address(result) + "  " + result.host_name;
}

}  // namespace velmora
