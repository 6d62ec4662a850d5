// What the composition root answers to the questions of the folders below it: thin adapters from
// one module to another. They decide nothing.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "net/message_connections.h"
#include "net/questions.h"
#include "net/traffic_counters.h"
#include "share/query_answering.h"
#include "share/questions.h"

namespace velmora {

// The place of the host cache while there is none: it takes pongs and knows no names.
class NoHostCache : public PongIntake, public HostNames, public ClientNames {
 public:
  void set_cache_stat(const DescriptorHeader&, const Pong&, std::size_t) override {}
  std::string dns_from_cache(const std::string&) override { return "?"; }
  std::string name_of(const std::string& address) override { return dns_from_cache(address); }
};

// How query hits leave: over the message connections, counted.
class Replies : public ReplyChannel {
 public:
  Replies(MessageConnections& connections, TrafficCounters& counters, std::string servent_guid)
      : connections_(connections), counters_(counters), servent_guid_(std::move(servent_guid)) {}

  void send_reply(std::size_t connection, std::string_view descriptor) override {
    connections_.msgwrite(connection, descriptor);
  }
  [[nodiscard]] std::string local_address() const override { return connections_.local_address(); }
  [[nodiscard]] const std::string& servent_guid() const override { return servent_guid_; }
  void count_query_hit_sent() override { counters_.query_hits_sent += 1; }

 private:
  MessageConnections& connections_;
  TrafficCounters& counters_;
  std::string servent_guid_;
};

// How queries reach the shared files.
class Answers : public QueryAnswerer {
 public:
  explicit Answers(QueryAnswering& answering) : answering_(answering) {}
  void send_query_reply(std::string search_text, std::string_view query_guid,
                        std::size_t connection) override {
    answering_.send_query_reply(std::move(search_text), query_guid, connection);
  }

 private:
  QueryAnswering& answering_;
};

}  // namespace velmora
