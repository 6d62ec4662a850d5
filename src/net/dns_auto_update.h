// The periodic pass that fills in missing host names of the program's other records: from the host
// cache, else from the DNS server. A pass walks through the records, a slice in every turn of the
// loop, asks for the addresses that it could not name, and walks again, half a second apart, for
// the answers that have come. The next pass begins 5 seconds after this one has ended. A record is
// found by its address, never by an index that waited for an answer.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "net/dns_names.h"
#include "net/questions.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

// One pass asks for so many addresses; what is left finds the next one.
inline constexpr std::size_t kMostAddressesPerPass = 10'000;
inline constexpr std::size_t kRecordsPerTurn = 2000;

class DnsAutoUpdate {
 public:
  // The arrays are walked in this order; they are not owned.
  DnsAutoUpdate(EventLoop& loop, DnsNames& names, DebugLog& log, std::vector<NamedRecords*> arrays);

  void start();  // a pass every 5 seconds
  void stop();   // one under way ends where it is

  // Begins a pass; one that is under way walks once more.
  void dns_auto_update();

 private:
  void walk();
  void step(const std::function<void()>& body);
  void post_slice();
  void walk_slice();
  void visit(NamedRecords& records, std::size_t index);
  void end_walk();
  void ask_more();
  void answered(const std::string& address, const std::string& name);

  EventLoop& loop_;
  DnsNames& names_;
  DebugLog& log_;
  std::vector<NamedRecords*> arrays_;
  std::unique_ptr<Timer> dnsAutoT_;  // off during a pass
  std::unique_ptr<Timer> next_walk_;

  bool started_ = false;
  bool passing_ = false;
  bool walking_ = false;
  bool walk_again_ = false;
  std::size_t array_ = 0;  // where the walk is
  std::size_t index_ = 1;
  bool named_ = false;  // a record of that array
  // The addresses that this pass asks for; the name once it is answered.
  std::unordered_map<std::string, std::optional<std::string>> asked_for_;
  std::deque<std::string> waiting_;                       // of those, not yet asked
  std::size_t unanswered_ = 0;                            // of those, asked
  std::shared_ptr<int> alive_ = std::make_shared<int>();  // what was posted or asked looks here
};

}  // namespace velmora
