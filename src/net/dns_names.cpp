#include "net/dns_names.h"

#include <utility>

#include "platform/trap.h"

namespace velmora {
namespace {

const char* const kNoRecordName = "??";

// Kept: the text of a failure is a name like any other and is stored.
std::string name_for(const DnsAnswer& answer) {
  switch (answer.outcome()) {
    case DnsOutcome::name:
      return answer.name;
    case DnsOutcome::no_record:
    case DnsOutcome::timed_out:
      return kNoRecordName;
    case DnsOutcome::failed:
      break;
  }
  return "Error resolving IP";
}

}  // namespace

void DnsNames::dns_to_cache(const std::string& address, const std::string& name) {
  trap(log_, "dns_to_cache: ", [&] {
    const std::size_t row = cache_.find(address);
    if (row != 0) cache_.set_host_name(row, name);
  });
}

std::string DnsNames::dns_from_cache(const std::string& address) {
  if (last_address_ == address) return last_answer_;
  std::string name = "?";
  trap(log_, "dns_from_cache: ", [&] {
    const std::size_t row = cache_.find(address);
    if (row != 0) name = cache_.row(row).host_name;
    last_address_ = address;
    last_answer_ = name;
  });
  return name;
}

bool DnsNames::dns_resolve(const std::string& address, Resolved resolved) {
  if (!lookups_.server_given()) return false;
  return trap(log_, "dns_resolve: ", [&] {
    lookups_.ask(address, [this, address, resolved = std::move(resolved)](const DnsAnswer& answer) {
      std::string name = kNoRecordName;
      trap(log_, "dns_resolve: ", [&] {
        name = name_for(answer);
        if (name != kNoRecordName) dns_to_cache(address, name);
      });
      resolved(name);
    });
  });
}

}  // namespace velmora
