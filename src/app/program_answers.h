// What the composition root answers to the questions of the folders below it: thin adapters from
// one module to another. They decide nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/servent_identifier.h"
#include "form/control.h"
#include "net/address_filter.h"
#include "net/dns_names.h"
#include "net/message_connections.h"
#include "net/originator.h"
#include "net/questions.h"
#include "net/relay.h"
#include "net/traffic_counters.h"
#include "platform/one_based.h"
#include "share/push_answering.h"
#include "share/query_answering.h"
#include "share/questions.h"

namespace velmora {

// How the upload log finds the names of clients.
class ClientNamesOfCache : public ClientNames {
 public:
  explicit ClientNamesOfCache(HostNames& names) : names_(names) {}
  std::string name_of(const std::string& address) override {
    return names_.dns_from_cache(address);
  }

 private:
  HostNames& names_;
};

// The records of an array by their missing names; those that are not in use are passed over. The
// list that shows them keeps its number of rows: a name is no news of new ones.
template <class Record>
class NamesOf : public NamedRecords {
 public:
  using InUse = bool (*)(const Record& record);
  NamesOf(OneBased<Record>& records, ListView& list, InUse in_use = nullptr)
      : records_(records), list_(list), in_use_(in_use) {}

  [[nodiscard]] std::size_t upper_bound() const override { return records_.upper_bound(); }
  [[nodiscard]] const std::string* nameless_address(std::size_t index) const override {
    const Record& record = records_.at(index);
    if (in_use_ != nullptr && !in_use_(record)) return nullptr;
    return name_is_missing(record.host_name) ? &record.address : nullptr;
  }
  void set_host_name(std::size_t index, const std::string& name) override {
    records_.at(index).host_name = name;
  }
  void show_again() override { list_.redraw(list_.rows()); }

 private:
  OneBased<Record>& records_;
  ListView& list_;
  InUse in_use_;
};

// How query hits leave: over the message connections, counted.
class Replies : public ReplyChannel {
 public:
  Replies(MessageConnections& connections, TrafficCounters& counters,
          const ServentIdentifier& identifier)
      : connections_(connections), counters_(counters), identifier_(identifier) {}

  void send_reply(std::size_t connection, std::string_view descriptor) override {
    connections_.msgwrite(connection, descriptor);
  }
  [[nodiscard]] std::string local_address() const override { return connections_.local_address(); }
  [[nodiscard]] const std::string& servent_guid() const override { return identifier_.guid(); }
  void count_query_hit_sent() override { counters_.query_hits_sent += 1; }

 private:
  MessageConnections& connections_;
  TrafficCounters& counters_;
  const ServentIdentifier& identifier_;
};

// How queries reach the shared files.
class Answers : public QueryAnswerer {
 public:
  explicit Answers(QueryAnswering& answering) : answering_(answering) {}
  void send_query_reply(std::string_view search_text, const DescriptorHeader& query,
                        std::size_t connection) override {
    answering_.send_query_reply(search_text, query.guid, connection, query.hops);
  }

 private:
  QueryAnswering& answering_;
};

// How pushes reach the shared files.
class PushAnswers : public PushAnswerer {
 public:
  explicit PushAnswers(PushAnswering& answering) : answering_(answering) {}
  bool answer_push(const Push& push) override { return answering_.answer_push(push); }

 private:
  PushAnswering& answering_;
};

// How downloads ask for a push: the relay knows the way, the originator speaks.
class PushRequests : public PushSender {
 public:
  PushRequests(const Relay& relay, Originator& originator)
      : relay_(relay), originator_(originator) {}
  bool ask_push(std::string_view servent, std::int32_t file_number) override {
    const std::size_t way = relay_.way_to(servent);
    return way != 0 && originator_.send_push(way, servent, file_number);
  }

 private:
  const Relay& relay_;
  Originator& originator_;
};

// To whom nothing is offered: the addresses that the cache keeps out, and some that only a
// stranger would name.
class CacheFilterRule : public AddressRule {
 public:
  CacheFilterRule(const FilterArray& filter, const MessageConnections& connections,
                  const Behaviour& behaviour)
      : filter_(filter), connections_(connections), behaviour_(behaviour) {}
  [[nodiscard]] bool keeps_out(const std::string& address) const override {
    return is_filtered_for_strangers(filter_, address, connections_.local_address(), behaviour_);
  }

 private:
  const FilterArray& filter_;
  const MessageConnections& connections_;
  const Behaviour& behaviour_;
};

}  // namespace velmora
