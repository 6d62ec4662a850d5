// The DNS look-ups under way, of the whole program: one query per address at a time and four at
// once in all, the rest waits in the order of asking. The server is the text of the field dns_ser
// when a query leaves; while that is empty nobody is asked. It keeps no names.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "form/form.h"
#include "platform/dns_client.h"

namespace velmora {

inline constexpr std::size_t kMostLookupsAtOnce = 4;
inline constexpr std::size_t kMostLookupsWaiting = 1000;

class DnsLookups {
 public:
  using Done = std::function<void(const DnsAnswer& answer)>;

  DnsLookups(DnsClient& client, const Form& form) : client_(client), form_(form) {}

  [[nodiscard]] bool server_given() const { return !form_.dns_ser.text().empty(); }

  // Calls back once, later; a look-up of the address that waits or is under way is shared. Raises
  // "Out of memory" when too many wait.
  void ask(const std::string& address, Done done);
  [[nodiscard]] std::size_t under_way() const { return under_way_.size(); }

  // Forgets every look-up; nobody is called back.
  void cancel();

 private:
  struct Lookup {
    std::string address;
    std::vector<Done> done;
    std::unique_ptr<DnsRequest> request;
  };

  Lookup* find(const std::string& address);
  void start_waiting(bool have_waited);
  void answered(const std::string& address, const DnsAnswer& answer);

  DnsClient& client_;
  const Form& form_;
  std::vector<Lookup> under_way_;
  std::deque<Lookup> waiting_;
};

}  // namespace velmora
