#include "cli/cache_verbs.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr const char* kCache = "lcache";
constexpr const char* kFollowing = "What may follow";
constexpr const char* kFilter = "cachefilter_config";

struct Arguments {
  std::size_t row = 0;
  std::string text;
};

void clear_cache(Context& context) {
  Servent& servent = context.servent();
  servent.press("clear_cache");
  if (servent.list(kCache, 1, 0).total > 0) throw Failure("the servent kept its hosts");
  if (context.json) {
    Context::print_json({{"total", 0}});
  } else {
    Context::print("No hosts are remembered now.");
  }
}

void remove_cached(Context& context, std::size_t row) {
  Servent& servent = context.servent();
  const List list = servent.list(kCache, row, 1);
  if (list.rows.empty()) {
    throw Failure(fmt::format("there is no row {}: the cache has {}", row, list.total));
  }
  servent.act_on_row("select", kCache, row);
  servent.press("remove_cache");
  if (context.json) {
    Context::print_json({{"row", row}, {"host", list.cell(0, "Hosts")}});
  } else {
    Context::print(visible("Removed: " + list.cell(0, "Hosts")));
  }
}

// The entries as a list of one column.
List filter_list(Servent& servent) {
  List list;
  list.columns = {"Prefix"};
  for (std::string& item : servent.items(kFilter)) list.rows.push_back({std::move(item)});
  list.total = list.rows.size();
  return list;
}

void print_filter(const Context& context, Servent& servent) {
  context.print_list(filter_list(servent), "Nothing is filtered.");
}

void add_filter(Context& context, const std::string& prefix) {
  Servent& servent = context.servent();
  const std::size_t before = servent.items(kFilter).size();
  servent.enter(kFilter, prefix);
  if (servent.items(kFilter).size() <= before) throw Failure("the servent did not take " + prefix);
  print_filter(context, servent);
}

// The row of an entry, which is named by its text or by the row's number.
std::size_t filter_row(const std::vector<std::string>& items, const std::string& named) {
  const auto found = std::find(items.begin(), items.end(), named);
  if (found != items.end()) return static_cast<std::size_t>(found - items.begin()) + 1;
  std::size_t row = 0;
  const char* end = named.data() + named.size();
  const auto [used, error] = std::from_chars(named.data(), end, row);
  if (error != std::errc() || used != end) throw Failure("the filter has no entry " + named);
  if (row < 1 || row > items.size()) {
    throw Failure(fmt::format("there is no row {}: the filter has {}", row, items.size()));
  }
  return row;
}

void remove_filter(Context& context, const std::string& named) {
  Servent& servent = context.servent();
  servent.act_on_row("remove", kFilter, filter_row(servent.items(kFilter), named));
  print_filter(context, servent);
}

void add_cache(CLI::App& app, Context& context) {
  CLI::App* cache =
      add_verb(app, "cache", kEverydayVerbs, "List the hosts that answered, most recent first",
               "  velmora-cli cache\n  velmora-cli cache remove 3\n  velmora-cli cache clear\n\n"
               "It shows as many rows as the setting cachemax_config allows. More hosts:\n"
               "  velmora-cli set cachemax_config 1000\n  velmora-cli more");
  cache->require_subcommand(0, 1);
  // A verb of its own words has chosen its action before this is called.
  cache->callback([&context, cache] {
    if (!cache->get_subcommands().empty()) return;
    context.action = [&context] {
      context.print_list(context.servent().list(kCache), "No hosts are remembered.");
    };
  });

  CLI::App* verb =
      add_verb(*cache, "clear", kFollowing, "Forget all hosts", "  velmora-cli cache clear");
  verb->callback([&context] { context.action = [&context] { clear_cache(context); }; });

  auto given = std::make_shared<Arguments>();
  verb = add_verb(*cache, "remove", kFollowing, "Forget the host in a row of `cache`",
                  "  velmora-cli cache remove 3");
  verb->add_option("ROW", given->row, "The row's number, as `cache` shows it")
      ->required()
      ->check(above_zero());
  verb->callback([&context, given] {
    context.action = [&context, given] { remove_cached(context, given->row); };
  });
}

void add_filter_verb(CLI::App& app, Context& context) {
  CLI::App* filter =
      add_verb(app, "filter", kEverydayVerbs, "List the addresses that stay out of the cache",
               "  velmora-cli filter\n  velmora-cli filter add 192.0.2.\n"
               "  velmora-cli filter remove 192.0.2.\n  velmora-cli filter remove 1\n\n"
               "An entry keeps out every address that begins with it, from then on.");
  filter->require_subcommand(0, 1);
  filter->callback([&context, filter] {
    if (!filter->get_subcommands().empty()) return;
    context.action = [&context] { print_filter(context, context.servent()); };
  });

  auto given = std::make_shared<Arguments>();
  CLI::App* verb = add_verb(*filter, "add", kFollowing, "Keep out what begins so",
                            "  velmora-cli filter add 192.0.2.");
  verb->add_option_function<std::string>(
          "PREFIX", [given](const std::string& text) { given->text = argument_text(text); },
          "What the addresses begin with")
      ->required();
  verb->callback([&context, given] {
    context.action = [&context, given] { add_filter(context, given->text); };
  });

  given = std::make_shared<Arguments>();
  verb = add_verb(*filter, "remove", kFollowing, "Take an entry out of the filter",
                  "  velmora-cli filter remove 192.0.2.\n  velmora-cli filter remove 1");
  verb->add_option_function<std::string>(
          "ENTRY", [given](const std::string& text) { given->text = argument_text(text); },
          "The entry itself, or its row as `filter` shows it")
      ->required();
  verb->callback([&context, given] {
    context.action = [&context, given] { remove_filter(context, given->text); };
  });
}

}  // namespace

void add_cache_verbs(CLI::App& app, Context& context) {
  add_cache(app, context);
  add_filter_verb(app, context);
}

}  // namespace velmora::cli
