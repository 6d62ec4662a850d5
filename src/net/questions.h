// What the servent network asks of the rest of the program, named by need; the composition root
// answers. Everything here is called on the one thread, inside the handling of a descriptor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "protocol/descriptor_header.h"
#include "protocol/payloads.h"

namespace velmora {

// Asked for every pong received: the host cache's intake.
class PongIntake {
 public:
  virtual ~PongIntake() = default;
  virtual void set_cache_stat(const DescriptorHeader& header, const Pong& pong,
                              std::size_t connection) = 0;
};

// Asked for every query received: matches it against the shared files and replies on the
// connection. Traps its own errors.
class QueryAnswerer {
 public:
  virtual ~QueryAnswerer() = default;
  virtual void send_query_reply(std::string_view search_text, const DescriptorHeader& query,
                                std::size_t connection) = 0;
};

// Asked for every query hit that is for this servent; `search` is the number of the search that it
// answers, 0 when that is not known.
class QueryHitIntake {
 public:
  virtual ~QueryHitIntake() = default;
  virtual void set_query_reply_view(const QueryHit& hit, std::int16_t search) = 0;
};

// Asked for every push received: does what it asks if it is for this servent. Returns whether it
// is; it goes nowhere else then. Traps its own errors.
class PushAnswerer {
 public:
  virtual ~PushAnswerer() = default;
  virtual bool answer_push(const Push& push) = 0;
};

// Asked by send_query before anything is sent: keeps text and identifier in the current search
// slot, and tells the slot's number. A slot that does not exist raises "Subscript out of range".
class SearchMemory {
 public:
  virtual ~SearchMemory() = default;
  virtual std::int16_t remember_search(const std::string& text, const std::string& guid) = 0;
  // Tells of every search that it keeps.
  using Visit =
      std::function<void(std::int16_t number, const std::string& text, const std::string& guid)>;
  virtual void visit_searches(const Visit& visit) const = 0;
};

// The name known for an address; "?" when there is none.
class HostNames {
 public:
  virtual ~HostNames() = default;
  virtual std::string dns_from_cache(const std::string& address) = 0;
};

// Offered to the search page: sends the user's search to every connected servent.
class QuerySender {
 public:
  virtual ~QuerySender() = default;
  virtual void send_query(const std::string& search_text) = 0;
};

// Offered to the download client: asks the servent of that identifier to connect and offer the
// file. False when no connection leads to it.
class PushSender {
 public:
  virtual ~PushSender() = default;
  virtual bool ask_push(std::string_view servent, std::int32_t file_number) = 0;
};

// One array of records that carry a host's name beside its address, for the pass that fills missing
// names in. Records count from 1; between two calls the array may have grown or shrunk.
class NamedRecords {
 public:
  virtual ~NamedRecords() = default;
  [[nodiscard]] virtual std::size_t upper_bound() const = 0;
  // The address of the record if its name is missing, else none; good until the next call.
  [[nodiscard]] virtual const std::string* nameless_address(std::size_t index) const = 0;
  virtual void set_host_name(std::size_t index, const std::string& name) = 0;
  // Names were set: the records are to be shown again.
  virtual void show_again() = 0;
};

}  // namespace velmora
