#include "net/host_location.h"

namespace velmora {
namespace {

bool shown_by_name(const std::string& host_name, bool show_dns) {
  return show_dns && host_name.size() >= 3;
}

}  // namespace

std::string host_location_text(const std::string& address, const std::string& port,
                               const std::string& host_name, bool show_dns) {
  return (shown_by_name(host_name, show_dns) ? host_name : address) + ":" + port;
}

std::string host_location_tooltip(const std::string& address, const std::string& port,
                                  const std::string& host_name, bool show_dns) {
  const std::string by_address = address + ":" + port;
  if (shown_by_name(host_name, show_dns)) return host_name + "   " + by_address;
  if (host_name.size() < 2) return "Didn't resolve yet";
  if (host_name.size() == 2) return "Unresolved";
  return by_address + "  " + host_name;
}

}  // namespace velmora
