#include "transfer/result_location.h"

#include "net/host_location.h"

namespace velmora {

std::string location_text(const search_result& result, bool show_dns) {
  return host_location_text(result.address, result.port, result.host_name, show_dns);
}

std::string location_tooltip(const search_result& result, bool show_dns) {
  return host_location_tooltip(result.address, result.port, result.host_name, show_dns);
}

}  // namespace velmora
