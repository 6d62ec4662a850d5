#include "simulator/search_trial.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/servent.h"
#include "net/message_connections.h"
#include "net/traffic_counters.h"
#include "platform/sim/sim_chance.h"
#include "platform/sim/sim_world.h"
#include "simulator/shared_world.h"
#include "transfer/search_results.h"

namespace velmora::simulator {
namespace {

constexpr std::int64_t kSearch_ms = 1200;
// A network is made anew before silence ends its connections, so that what is compared is how far a
// search reaches and nothing else.
constexpr std::size_t kSearchesOfANetwork = 12;
constexpr std::int64_t kLatency_us = 20'000;
constexpr std::int64_t kJitter_us = 40'000;

using Edges = std::set<std::pair<std::size_t, std::size_t>>;

// Every servent's ends are dealt out in pairs until no pair is a loop or there twice.
Edges random_graph(std::size_t servents, std::size_t degree, sim::Chance& chance) {
  for (;;) {
    std::vector<std::size_t> ends;
    for (std::size_t i = 0; i < servents * degree; ++i) ends.push_back(i % servents);
    for (std::size_t i = ends.size(); i > 1; --i) std::swap(ends[i - 1], ends[chance.below(i)]);
    Edges edges;
    for (std::size_t i = 0; i + 1 < ends.size(); i += 2) {
      // One that does not fit changes places with others further on.
      for (std::size_t tries = 0; tries < 100; ++tries) {
        const auto edge = std::minmax(ends[i], ends[i + 1]);
        if (edge.first != edge.second && !edges.contains(edge)) break;
        std::swap(ends[i + 1], ends[i + 1 + chance.below(ends.size() - i - 1)]);
      }
      const auto edge = std::minmax(ends[i], ends[i + 1]);
      if (edge.first != edge.second) edges.insert(edge);
    }
    if (edges.size() * 2 == ends.size()) return edges;
  }
}

std::string address_of(std::size_t number) { return fmt::format("24.0.0.{}", number + 1); }

// A word that stands in no other name.
std::string word_of(std::size_t servent, std::size_t file) {
  return fmt::format("s{:03}f{:03}", servent, file);
}

class Network {
 public:
  Network(const TrialOptions& options, std::uint64_t seed) : options_(options), world_(seed) {
    sim::Chance chance(seed);
    world_.conditions().latency_us = kLatency_us;
    world_.conditions().jitter_us = kJitter_us;
    std::vector<std::size_t> order(options.servents);
    std::iota(order.begin(), order.end(), std::size_t{0});
    for (std::size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[chance.below(i)]);
    std::vector<bool> overlay(options.servents);
    for (std::size_t i = 0; i < options.overlay; ++i) overlay[order[i]] = true;
    for (std::size_t i = 0; i < options.servents; ++i) move_in(i, overlay[i]);
    world_.run_for(1000);
    for (const auto& [from, to] : random_graph(options.servents, options.degree, chance)) {
      servents_[from]->form().new_host.enter(address_of(to) + ":6346");
    }
    world_.run_for(1000);
  }

  ~Network() {
    for (const auto& servent : servents_) servent->shutdown();
  }
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;

  // Returns after how many milliseconds the first hit came; -1: none.
  std::int64_t search(std::size_t searcher, const std::string& word, std::size_t& wrong) {
    Form& form = servents_[searcher]->form();
    const auto& results = servents_[searcher]->parts().results.search_results();
    form.clear_search.click();
    form.Tsearch.set_text(word);
    const std::int64_t begin = world_.now_ms();
    form.start_search.click();
    std::int64_t first = -1;
    if (world_.run_until([&] { return results.upper_bound() > 0; }, kSearch_ms)) {
      first = world_.now_ms() - begin;
    }
    world_.run_for(kSearch_ms - (world_.now_ms() - begin));
    for (const search_result& result : results) {
      if (result.name.find(word) == std::string::npos) ++wrong;
    }
    return first;
  }

  [[nodiscard]] double messages() const {
    double sum = 0;
    for (const auto& servent : servents_) {
      const TrafficCounters& counters = servent->parts().counters;
      sum += double{counters.queries_in} + double{counters.query_hits_in};
    }
    return sum;
  }

  [[nodiscard]] std::size_t misread() const {
    std::size_t sum = 0;
    for (const auto& servent : servents_) {
      sum += static_cast<std::size_t>(servent->parts().counters.unknown);
      for (const ConnectionSlot& slot : servent->parts().connections.connection_slots()) {
        sum += static_cast<std::size_t>(slot.dropped);
      }
    }
    return sum;
  }

  [[nodiscard]] std::size_t connections() const {
    std::size_t sum = 0;
    for (const auto& servent : servents_) {
      sum += servent->parts().connections.connected_ones().size();
    }
    return sum / 2;
  }

 private:
  void move_in(std::size_t number, bool overlay) {
    sim::SimHost& host = world_.add_host(address_of(number));
    for (std::size_t i = 0; i < options_.files; ++i) {
      const std::string name = word_of(number, i) + " " + shared_name(number, i, false);
      host.files().put(std::string(kShareFolder) + "/" + name, "x");
    }
    ServentOptions wishes;
    wishes.set = {{"ttlMax_config", std::to_string(options_.ttl)},
                  {"max_in_host", "50"},
                  // Those that it makes are all that it wants.
                  {"max_out_host", "0"},
                  {"behaviour", overlay ? "Overlay" : "Classic"}};
    servents_.push_back(std::make_unique<Servent>(host.platform(), std::move(wishes)));
    servents_.back()->start();
    Form& form = servents_.back()->form();
    form.upload_config.enter(kShareFolder);
    form.scan_config.click();
  }

  TrialOptions options_;
  sim::SimWorld world_;
  std::vector<std::unique_ptr<Servent>> servents_;
};

}  // namespace

TrialResult run_search_trial(const TrialOptions& options) {
  sim::Chance chance(options.seed);
  TrialResult result;
  std::vector<std::int64_t> times;
  double messages = 0;
  while (result.searches < options.searches) {
    Network network(options, chance.below(1ULL << 62U));
    const std::size_t most = std::min(kSearchesOfANetwork, options.searches - result.searches);
    const double before = network.messages();
    for (std::size_t i = 0; i < most; ++i) {
      const std::size_t searcher = chance.below(options.servents);
      // Anybody but the searcher.
      const std::size_t owner =
          (searcher + 1 + chance.below(options.servents - 1)) % options.servents;
      const std::string word = word_of(owner, chance.below(options.files));
      const std::int64_t first = network.search(searcher, word, result.wrong);
      if (first >= 0) times.push_back(first);
    }
    messages += network.messages() - before;
    result.searches += most;
    result.connections = network.connections();
    result.misread += network.misread();
  }
  result.found = times.size();
  result.messages = messages / static_cast<double>(std::max<std::size_t>(result.searches, 1));
  if (!times.empty()) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    result.first_hit_ms = static_cast<double>(*middle);
  }
  return result;
}

}  // namespace velmora::simulator
