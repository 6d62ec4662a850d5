// What is done for every descriptor takes as much work with a full table as with an empty one.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "instruction_count.h"
#include "net/host_cache.h"
#include "net/message_connections.h"
#include "net/routing_table.h"
#include "platform/sim/sim_world.h"
#include "share/name_index.h"
#include "transfer/search_results.h"

namespace velmora {
namespace {

using Work = std::function<void()>;

struct NoLog : DebugLog {
  void debug_log(std::string_view) override {}
};

// What the parts under test stand on; the Work that is made shares it.
struct Rig {
  sim::SimWorld world;
  Platform platform = world.add_host("10.0.0.1").platform();
  Form form;
  NoLog log;
};

std::string guid(std::size_t number) {
  std::string text = std::to_string(number);
  text.resize(kGuidSize, 'g');
  return text;
}

std::string address(std::size_t number) {
  return "10." + std::to_string(number / 65536 % 256) + "." + std::to_string(number / 256 % 256) +
         "." + std::to_string(number % 256);
}

// The entry behind `size` others in a table that is full.
Work routing_look_up(std::size_t size) {
  auto table = std::make_shared<RoutingTable>();
  for (std::size_t i = 0; i < RoutingTable::kEntries; ++i) {
    Route route;
    table->seen_guid(guid(i), route);
  }
  return [table, wanted = guid(size)] {
    Route route;
    table->seen_guid(wanted, route);
  };
}

// Four connections among slots that are not in use.
Work connected_list(std::size_t size) {
  auto rig = std::make_shared<Rig>();
  struct Parts {
    TrafficCounters counters;
    RoutingTable routes;
  };
  auto parts = std::make_shared<Parts>();
  std::shared_ptr<MessageConnections> connections(
      new MessageConnections(rig->platform.loop, rig->platform.network, rig->form, rig->log,
                             parts->counters, parts->routes));
  connections->set_hosts_stat(size, {.state = kFreed});
  for (std::size_t i = 1; i <= 4; ++i) {
    connections->set_hosts_stat(size / 4 * i, {.state = kConnected});
  }
  return [rig, parts, connections, one = size / 4] {
    connections->set_hosts_stat(one, {.state = kClosing});
    connections->set_hosts_stat(one, {.state = kConnected});
    connections->recount();
    for (const std::size_t other : connections->connected_ones()) {
      static_cast<void>(connections->connected(other));
    }
  };
}

Work name_query(std::size_t size) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < size; ++i) names.push_back("track " + std::to_string(i) + ".mp3");
  names[size / 2] = "quagga";
  auto index =
      std::make_shared<NameIndex>(std::vector<std::string_view>(names.begin(), names.end()));
  return [index] {
    const std::string_view word = "QUAGGA";
    static_cast<void>(index->find({&word, 1}, 50));
  };
}

// A host that is known and lies in the middle, and one that is not known yet.
Work pong_intake(std::size_t size) {
  auto rig = std::make_shared<Rig>();
  auto filter = std::make_shared<FilterArray>();
  auto cache = std::make_shared<HostCache>(rig->platform.loop, *filter, rig->log);
  const auto take = [rig, filter, cache](std::size_t number) {
    Pong pong;
    pong.address = address(number);
    cache->set_cache_stat({}, pong, 1);
  };
  for (std::size_t i = 0; i < size; ++i) take(i);
  auto next = std::make_shared<std::size_t>(size);
  return [take, next, size] {
    take(size / 2);
    take((*next)++);
  };
}

Work search_result_intake(std::size_t size) {
  struct NoNames : HostNames {
    std::string dns_from_cache(const std::string&) override { return "?"; }
  };
  auto rig = std::make_shared<Rig>();
  auto names = std::make_shared<NoNames>();
  auto results =
      std::make_shared<SearchResults>(rig->platform.loop, rig->form, rig->log, *names, [] {});
  const auto take = [rig, names, results] {
    QueryHit hit;
    hit.hits = 1;
    hit.address = "10.0.0.2";
    hit.results.push_back({1, 1000, "some song.mp3"});
    results->set_query_reply_view(hit);
  };
  for (std::size_t i = 0; i < size; ++i) take();
  return take;
}

TEST(Growth, WorkForOneDescriptorDoesNotGrowWithTheTables) {
  struct Case {
    const char* what;
    Work (*make)(std::size_t size);
    std::size_t small;
    std::size_t large;
  };
  const Case cases[] = {
      {"routing look-up, the last entry", routing_look_up, 0, 400},
      {"routing look-up, no entry", routing_look_up, 0, 500},
      {"connected connections", connected_list, 20, 20'000},
      {"name query", name_query, 300, 20'000},
      {"pong intake", pong_intake, 300, 20'000},
      {"search result intake", search_result_intake, 300, 20'000},
  };
  for (const Case& c : cases) {
    const std::int64_t few = instructions_of(c.make(c.small));
    const std::int64_t many = instructions_of(c.make(c.large));
    ASSERT_GT(few, 0) << c.what;
    ASSERT_GT(many, 0) << c.what;
    EXPECT_LT(many, 4 * few + 400) << c.what << ": " << few << " instructions with a small table";
  }
}

}  // namespace
}  // namespace velmora
