#include "cli/generic_verbs.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/terminal.h"
#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

// What stands on the command line of these verbs.
struct Arguments {
  std::string control;
  std::string text;
  std::vector<std::string> controls;
  std::size_t row = 0;
  std::size_t first = 1;
  std::size_t count = 0;  // 0: all
  double duration = 0;
};
using Shared = std::shared_ptr<Arguments>;

void print_done(const Context& context) {
  if (context.json) Context::print_json(nlohmann::json::object());
}

void controls(Context& context, const std::string& pattern) {
  Table table({"Control", "Kind", "Page", "Caption", "Tool-tip"});
  nlohmann::json out = nlohmann::json::array();
  for (const ControlFacts& control : context.servent().controls()) {
    if (!name_matches(pattern, control.name)) continue;
    table.add({control.name, control.kind, control.page,
               control.caption + (control.enabled ? "" : " (not enabled)"), control.tooltip});
    out.push_back({{"control", control.name},
                   {"kind", control.kind},
                   {"page", control.page},
                   {"caption", control.caption},
                   {"tooltip", control.tooltip},
                   {"enabled", control.enabled}});
  }
  if (out.empty()) throw Failure(fmt::format("no control's name matches \"{}\"", pattern));
  if (context.json) {
    Context::print_json(out);
  } else {
    Context::print_table(table, "");
  }
}

void set(Context& context, const Arguments& given) {
  const auto all = context.servent().controls();
  const auto found = std::find_if(all.begin(), all.end(), [&](const ControlFacts& control) {
    return control.name == given.control;
  });
  // a name that is not known goes as text: the servent's error suggests the right one
  const std::string kind = found == all.end() ? std::string() : found->kind;
  context.servent().set(given.control, value_for(kind, given.text));
  print_done(context);
}

void rows(Context& context, const Arguments& given) {
  const std::size_t most = given.count == 0 ? static_cast<std::size_t>(-1) : given.count;
  const List list = context.servent().list(given.control, given.first, most);
  if (context.json) {
    Context::print_json({{"columns", list.columns},
                         {"total", list.total},
                         {"first", list.first},
                         {"rows", list.rows}});
    return;
  }
  Context::print_table(list_table(list), "No rows.");
  if (!list.rows.empty() && list.rows.size() < list.total) {
    Context::print(fmt::format("Rows {} to {} of {}.", list.first,
                               list.first + list.rows.size() - 1, list.total));
  }
}

void print_notice(const Context& context, const std::string& control) {
  if (context.json) {
    Context::print_json({{"control", control}});
  } else {
    Context::print(visible(control));
  }
  write_now({});
}

void subscribe(Context& context, const Arguments& given) {
  context.watch_interrupt();
  Servent& servent = context.servent();
  servent.subscribe(given.controls);
  const auto limit = context.deadline(0);
  const auto until = given.duration > 0 ? Clock::now() + seconds(given.duration) : limit;
  std::size_t seen = 0;
  try {
    while (given.count == 0 || seen < given.count) {
      const auto control = servent.client().notice(std::min(until, limit));
      if (!control) break;
      print_notice(context, *control);
      ++seen;
    }
  } catch (const Interrupted&) {
    return;  // the way to end it
  }
  if (seen < given.count && limit <= until) {
    throw Failure(
        fmt::format("{} of {} notices within {:g} s", seen, given.count, context.timeout));
  }
}

void quit(Context& context) {
  RpcClient& client = context.servent().client();
  try {
    client.call("quit");
  } catch (const RpcError&) {
    throw;
  } catch (const Failure&) {
    // gone before it answered: that is what was asked for
    if (!client.closed_by(Clock::now())) throw;
  }
  constexpr double kEnding = 30;
  if (!client.closed_by(context.deadline(kEnding))) throw Failure("the servent has not ended yet");
  print_done(context);
}

CLI::App* add(CLI::App& app, const char* name, const char* description, const char* examples) {
  return add_verb(app, name, kEveryControl, description, examples);
}

void add_control(CLI::App* verb, const Shared& given) {
  verb->add_option_function<std::string>(
          "CONTROL", [given](const std::string& text) { given->control = argument_text(text); },
          "The control's name, as `controls` shows it")
      ->required();
}

void add_text(CLI::App* verb, const Shared& given, const char* name, const char* description) {
  verb->add_option_function<std::string>(
          name, [given](const std::string& text) { given->text = argument_text(text); },
          description)
      ->required();
}

void add_reading_verbs(CLI::App& app, Context& context) {
  auto given = std::make_shared<Arguments>();
  CLI::App* verb = add(app, "controls", "List the controls: name, kind, page, caption, tool-tip",
                       "  velmora-cli controls\n  velmora-cli controls '*_config'");
  verb->add_option_function<std::string>(
      "PATTERN", [given](const std::string& text) { given->control = argument_text(text); },
      "Only names that hold this text, or match it where it has * or ?");
  verb->callback([&context, given] {
    context.action = [&context, given] { controls(context, given->control); };
  });

  given = std::make_shared<Arguments>();
  verb = add(app, "get", "Print the value of a control", "  velmora-cli get port_config");
  add_control(verb, given);
  verb->callback([&context, given] {
    context.action = [&context, given] {
      const nlohmann::json value = context.servent().value(given->control);
      if (context.json) {
        Context::print_json({{"value", value}});
      } else {
        Context::print(visible_lines(value_text(value)));
      }
    };
  });

  given = std::make_shared<Arguments>();
  verb = add(app, "rows", "Print the rows of a list",
             "  velmora-cli rows lcache\n  velmora-cli rows lfound --first 101 --count 50");
  add_control(verb, given);
  verb->add_option("--first", given->first, "The first row to print, from 1")
      ->check(above_zero())
      ->type_name("N");
  verb->add_option("--count", given->count, "How many rows to print at most")
      ->check(above_zero())
      ->type_name("N");
  verb->callback(
      [&context, given] { context.action = [&context, given] { rows(context, *given); }; });

  given = std::make_shared<Arguments>();
  verb = add(app, "subscribe", "Print the name of a control each time it changes",
             "  velmora-cli subscribe lHosts StatusBar --for 10\n"
             "  velmora-cli subscribe lfound --count 1 --timeout 60");
  verb->add_option_function<std::vector<std::string>>(
      "CONTROL",
      [given](const std::vector<std::string>& names) {
        for (const std::string& name : names) given->controls.push_back(argument_text(name));
      },
      "The controls to watch; none: all");
  verb->add_option("--count", given->count, "End after so many changes")
      ->check(above_zero())
      ->type_name("N");
  verb->add_option("--for", given->duration, "End after so many seconds")
      ->check(above_zero())
      ->type_name("SECONDS");
  verb->callback(
      [&context, given] { context.action = [&context, given] { subscribe(context, *given); }; });
}

void add_changing_verbs(CLI::App& app, Context& context) {
  auto given = std::make_shared<Arguments>();
  CLI::App* verb = add(app, "set", "Set a field, check box, slider or option group",
                       "  velmora-cli set max_in_host 4\n  velmora-cli set show_dns on");
  add_control(verb, given);
  add_text(verb, given, "VALUE", "A text, a number, or on/off, as the control's kind wants it");
  verb->callback(
      [&context, given] { context.action = [&context, given] { set(context, *given); }; });

  given = std::make_shared<Arguments>();
  verb = add(app, "press", "Click a button, a label or a menu item",
             "  velmora-cli press connect_auto");
  add_control(verb, given);
  verb->callback([&context, given] {
    context.action = [&context, given] {
      context.servent().press(given->control);
      print_done(context);
    };
  });

  given = std::make_shared<Arguments>();
  verb = add(app, "enter", "Type a text into a field and press Enter",
             "  velmora-cli enter new_host 192.0.2.7:6346");
  add_control(verb, given);
  add_text(verb, given, "TEXT", "The text to type");
  verb->callback([&context, given] {
    context.action = [&context, given] {
      context.servent().enter(given->control, given->text);
      print_done(context);
    };
  });
}

struct RowVerb {
  const char* name;
  const char* description;
  const char* examples;
};

constexpr RowVerb kRowVerbs[] = {
    {"remove", "Press the Delete key on a row", "  velmora-cli remove upload_config 2"},
    {"select", "Click a row", "  velmora-cli select lfound 3"},
    {"activate", "Double-click a row", "  velmora-cli activate lcache 1"},
};

void add_row_verbs(CLI::App& app, Context& context) {
  for (const RowVerb& row_verb : kRowVerbs) {
    auto given = std::make_shared<Arguments>();
    CLI::App* verb = add(app, row_verb.name, row_verb.description, row_verb.examples);
    add_control(verb, given);
    verb->add_option("ROW", given->row, "The row's number, from 1")
        ->required()
        ->check(above_zero());
    verb->callback([&context, given, method = row_verb.name] {
      context.action = [&context, given, method] {
        context.servent().act_on_row(method, given->control, given->row);
        print_done(context);
      };
    });
  }
}

}  // namespace

void add_generic_verbs(CLI::App& app, Context& context) {
  add_reading_verbs(app, context);
  add_changing_verbs(app, context);
  add_row_verbs(app, context);
  CLI::App* verb = add(app, "quit", "End the servent, as the tray menu's Exit does",
                       "  velmora-cli --profile ~/second quit");
  verb->callback([&context] { context.action = [&context] { quit(context); }; });
}

}  // namespace velmora::cli
