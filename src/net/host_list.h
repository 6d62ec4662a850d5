// The rows of lHosts ("Currently connected"): a view over the connection slots, one row a slot.
#pragma once

#include <string>

#include "form/form.h"
#include "net/message_connections.h"

namespace velmora {

class HostList : public ListSource {
 public:
  HostList(Form& form, const MessageConnections& connections);

  [[nodiscard]] std::size_t rows() const override;
  // "Hosts", "Dir", "Sent/Recv/Drop", "Stat", "Lport", "Sock" (the slot's index), "Buff" (bytes
  // written but not yet sent).
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::string row_key(std::size_t row) const override;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const override;

 private:
  const Form& form_;
  const MessageConnections& connections_;
};

}  // namespace velmora
