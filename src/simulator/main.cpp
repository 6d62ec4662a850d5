// velmora-sim: whole networks of servents in virtual time, with faults, one for every seed.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "simulator/scenario.h"
#include "simulator/search_trial.h"

namespace {

using velmora::simulator::ScenarioOptions;
using velmora::simulator::ScenarioResult;

constexpr int kWrongCommandLine = 2;

struct Totals {
  std::uint64_t seeds = 0;
  double virtual_s = 0;
  std::uint64_t checks = 0;
  std::uint64_t forwarded = 0;
  std::uint64_t files = 0;
};

std::map<std::string, velmora::simulator::Plant> plants() {
  using velmora::simulator::Plant;
  return {{"forward", Plant::forward},
          {"file", Plant::file},
          {"tick", Plant::tick},
          {"leak", Plant::leak},
          {"error", Plant::error}};
}

bool run(const ScenarioOptions& options, Totals& totals) {
  const ScenarioResult result = velmora::simulator::run_scenario(options);
  ++totals.seeds;
  totals.virtual_s += static_cast<double>(result.time_ms) / 1000;
  totals.checks += result.checks;
  totals.forwarded += result.forwarded;
  totals.files += result.files_finished;
  if (result.fault.empty()) return true;
  std::printf("seed %llu, %zu servents, %lld s: at %.3f s: %s\n",
              static_cast<unsigned long long>(options.seed), result.servents,
              static_cast<long long>(result.seconds), static_cast<double>(result.time_ms) / 1000,
              result.fault.c_str());
  return false;
}

// The table of the manual: each TTL with all servents Classic, half of them, and none.
int print_trial(velmora::simulator::TrialOptions options) {
  std::printf(
      "%zu servents, %zu connections and %zu files each, %zu searches a line, seed %llu\n\n",
      options.servents, options.degree, options.files, options.searches,
      static_cast<unsigned long long>(options.seed));
  std::printf("| TTL | profile | found | messages a search | first hit after |\n");
  std::printf("|---|---|---|---|---|\n");
  for (const int ttl : {3, 5, 7}) {
    for (const int overlay : {0, 50, 100}) {
      options.ttl = ttl;
      options.overlay = options.servents * static_cast<std::size_t>(overlay) / 100;
      const velmora::simulator::TrialResult result = velmora::simulator::run_search_trial(options);
      std::printf("| %d | %s | %.1f %% | %.0f | %.0f ms |\n", ttl,
                  overlay == 0     ? "Classic"
                  : overlay == 100 ? "Overlay"
                                   : "half of them Overlay",
                  100.0 * static_cast<double>(result.found) / static_cast<double>(result.searches),
                  result.messages, result.first_hit_ms);
      std::fflush(stdout);
    }
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  std::uint64_t seeds = 100;
  std::uint64_t first = 1;
  std::uint64_t one = 0;
  bool verbose = false;
  ScenarioOptions options;
  options.allocation_faults = true;
  CLI::App app{
      "velmora-sim - networks of servents in virtual time, with faults, one for every seed.\n"
      "After every event the servents that it touched are checked: no routing entry names a\n"
      "connection that is gone, every forwarded byte came in, slots are freed in time, open files\n"
      "belong to running transfers, a finished file has the bytes that were shared, saved files\n"
      "come back as they were saved, and no error leaves an event. At the end of a seed every\n"
      "socket, timer, file and block of memory must have been given back.\n"
      "A violation is printed with its seed and virtual time and ends the program with status 1."};
  app.add_option("--seeds", seeds, "How many seeds")->capture_default_str();
  app.add_option("--first-seed", first, "The first of them")->capture_default_str();
  app.add_option("--seed", one, "Only this one");
  app.add_flag("--verbose", verbose, "Write what happens, with its virtual time");
  app.add_option("--servents", options.servents,
                 "Servents of each network; otherwise the seed chooses 5 to 30, mostly few")
      ->check(CLI::Range(1, 200));
  app.add_option("--seconds", options.seconds,
                 "Virtual seconds; otherwise the seed chooses 60 to 600, mostly few")
      ->check(CLI::Range(1, 100000));
  app.add_option("--plant", options.plant, "Plant a fault that the checks must find")
      ->transform(CLI::CheckedTransformer(plants()));
  app.add_flag("--no-memory-faults{false}", options.allocation_faults,
               "Never let a servent's request for memory fail");
  velmora::simulator::TrialOptions trial;
  CLI::App* search_trial = app.add_subcommand(
      "search-trial", "Count what searches find in an overlay, under Classic and under Overlay");
  search_trial->add_option("--servents", trial.servents, "Servents of the overlay")
      ->capture_default_str()
      ->check(CLI::Range(10, 200));
  search_trial->add_option("--searches", trial.searches, "Searches for each line of the table")
      ->capture_default_str()
      ->check(CLI::Range(1, 100000));
  search_trial->add_option("--seed", trial.seed, "What chance decides")->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : kWrongCommandLine;
  }
  if (search_trial->parsed()) return print_trial(trial);
  if (one != 0) {
    first = one;
    seeds = 1;
  }
  Totals totals;
  // What a process asks for once and keeps would look like a leak of the first seed.
  options.seed = 0;
  velmora::simulator::run_scenario(options);
  if (verbose) options.tell = [](const std::string& line) { std::printf("%s\n", line.c_str()); };
  bool good = true;
  for (std::uint64_t i = 0; i < seeds && good; ++i) {
    options.seed = first + i;
    good = run(options, totals);
  }
  std::printf("%llu seeds, %.0f virtual seconds, %llu checks, %llu forwarded, %llu files fetched\n",
              static_cast<unsigned long long>(totals.seeds), totals.virtual_s,
              static_cast<unsigned long long>(totals.checks),
              static_cast<unsigned long long>(totals.forwarded),
              static_cast<unsigned long long>(totals.files));
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
