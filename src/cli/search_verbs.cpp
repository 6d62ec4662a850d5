#include "cli/search_verbs.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "cli/progress.h"
#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr std::string_view kTrap = "Error: send_query";  // begins what a failed search logs

struct Arguments {
  std::vector<std::string> words;
  int slot = 0;  // 0: the one chosen now
  double wait = 3;
  bool all = false;
  bool clear = false;
  std::size_t first = 1;
  std::size_t count = 0;  // 0: all
};

std::size_t found_so_far(Servent& servent) { return read_count(servent.text("totalsearch")); }
std::size_t shown_so_far(Servent& servent) { return servent.list("lfound", 1, 0).total; }

// Sends the query; raises a Failure when it did not go out.
void send(Servent& servent, const std::string& words) {
  const std::size_t traps_before = occurrences(servent.text("frmDebug"), kTrap);
  servent.enter("Tsearch", words);
  const std::string log = servent.text("frmDebug");
  if (occurrences(log, kTrap) > traps_before) throw Failure(last_line_with(log, kTrap));
  const std::string message = servent.text("StatusBar");
  if (message == "No Connections to send query!") throw Failure(message);
}

// The list shows what was found a second after the last hit: waits so long, then until it does.
bool wait_for_results(Servent& servent, double wait, Clock::time_point latest) {
  servent.pass(std::min(Clock::now() + seconds(wait), latest));
  return servent.wait_until(latest, [&] { return shown_so_far(servent) == found_so_far(servent); });
}

void search(Context& context, const Arguments& given) {
  std::string words;
  for (const std::string& word : given.words) words += (words.empty() ? "" : " ") + word;
  constexpr double kSettling = 10;
  const auto latest = context.deadline(given.wait + kSettling);
  Servent& servent = context.servent();
  if (given.slot != 0) servent.set("search_num", given.slot);
  if (given.clear) servent.press("clear_search");
  std::size_t before = found_so_far(servent);
  servent.subscribe({"lfound", "totalsearch"});
  send(servent, words);
  const bool settled = wait_for_results(servent, given.wait, latest);

  const std::size_t total = shown_so_far(servent);
  if (total < before) before = 0;  // someone has cleared the list meanwhile
  List list;
  if (given.all) {
    list = servent.list("lfound");
  } else if (total > before) {
    list = servent.list("lfound", before + 1);
  }
  if (context.json) {
    nlohmann::json out = list_json(list);
    out["total"] = total;
    out["new"] = total - before;
    out["settled"] = settled;
    Context::print_json(out);
    return;
  }
  Context::print_table(list_table(list), "No results.");
  if (!list.rows.empty()) {
    Context::print(fmt::format("{} new, {} in all. Fetch one with: velmora-cli download ROW",
                               total - before, total));
  }
  if (!settled) Context::note("more results are still arriving; see `velmora-cli results` later");
}

void results(Context& context, const Arguments& given) {
  const std::size_t most = given.count == 0 ? static_cast<std::size_t>(-1) : given.count;
  context.print_list(context.servent().list("lfound", given.first, most), "No results.");
}

}  // namespace

void add_search_verbs(CLI::App& app, Context& context) {
  auto given = std::make_shared<Arguments>();
  CLI::App* verb =
      add_verb(app, "search", kEverydayVerbs, "Search the network and print what is found",
               "  velmora-cli search violin concerto\n"
               "  velmora-cli search --wait 10 --slot 2 manual pdf\n"
               "  velmora-cli search --clear -- -unusual-");
  verb->add_option_function<std::vector<std::string>>(
          "WORDS",
          [given](const std::vector<std::string>& words) {
            for (const std::string& word : words) given->words.push_back(argument_text(word));
          },
          "What the names should hold")
      ->required();
  verb->add_option("--slot", given->slot, "Which of the three searches this one replaces")
      ->check(CLI::Range(1, 3).description(""))
      ->type_name("1|2|3");
  verb->add_option("--wait", given->wait, "Seconds to wait for results")
      ->capture_default_str()
      ->check(not_negative())
      ->type_name("SECONDS");
  verb->add_flag("--all", given->all, "Print the results of earlier searches too");
  verb->add_flag("--clear", given->clear, "Drop the results of earlier searches first");
  verb->callback(
      [&context, given] { context.action = [&context, given] { search(context, *given); }; });

  given = std::make_shared<Arguments>();
  verb = add_verb(app, "results", kEverydayVerbs, "Print the results of all searches",
                  "  velmora-cli results\n  velmora-cli results --first 101 --count 100");
  verb->add_option("--first", given->first, "The first row to print, from 1")
      ->check(above_zero())
      ->type_name("N");
  verb->add_option("--count", given->count, "How many rows to print at most")
      ->check(above_zero())
      ->type_name("N");
  verb->callback(
      [&context, given] { context.action = [&context, given] { results(context, *given); }; });
}

}  // namespace velmora::cli
