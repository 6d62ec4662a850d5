#include "net/host_list.h"

#include "platform/number.h"

namespace velmora {

HostList::HostList(Form& form, const MessageConnections& connections)
    : form_(form), connections_(connections) {
  form.lHosts.set_source(this);
}

std::size_t HostList::rows() const { return connections_.connection_slots().upper_bound(); }

std::string HostList::row_key(std::size_t row) const {
  const ConnectionSlot& slot = connections_.connection_slots().at(row);
  return std::to_string(row) + ' ' + slot.address + ':' + std::to_string(unsigned_port(slot.port));
}

std::string HostList::cell(std::size_t row, std::size_t column) const {
  const ConnectionSlot& slot = connections_.connection_slots().at(row);
  switch (column) {
    case 1: {
      const bool named = form_.show_dns.checked() && slot.host_name.size() >= 3;
      return (named ? slot.host_name : slot.address) + ":" +
             std::to_string(unsigned_port(slot.port));
    }
    case 2:
      return slot.direction;
    case 3:
      return decimal_text(slot.sent) + "/" + decimal_text(slot.received) + "/" +
             decimal_text(slot.dropped);
    case 4:
      return slot.status;
    case 5:
      return std::to_string(unsigned_port(slot.local_port));
    case 6:
      return std::to_string(slot.socket);
    case 7:
      return std::to_string(connections_.unsent(row));
    default:
      return {};
  }
}

std::string HostList::cell_tooltip(std::size_t row, std::size_t column) const {
  if (column != 1) return {};
  const ConnectionSlot& slot = connections_.connection_slots().at(row);
  return slot.address + ":" + std::to_string(unsigned_port(slot.port)) + "  " + slot.host_name;
}

}  // namespace velmora
