#include "cli/behaviour_verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "cli/failure.h"
#include "cli/values.h"
#include "platform/behaviour.h"

namespace velmora::cli {
namespace {

constexpr std::string_view kSuffix = "_behaviour";
constexpr const char* kProfiles[] = {"Classic", "Overlay", "Own choice"};
constexpr int kNamedProfiles = 2;  // those that can be chosen by name

struct Switch {
  std::string name;
  std::string control;
  std::string changes;
  std::string to_peers;
  bool on = false;
};

std::vector<Switch> switches(Servent& servent) {
  std::vector<Switch> all;
  for (const ControlFacts& facts : servent.controls()) {
    if (!facts.name.ends_with(kSuffix)) continue;
    Switch one;
    one.control = facts.name;
    one.name = facts.name.substr(0, facts.name.size() - kSuffix.size());
    const std::size_t end = facts.tooltip.find('\n');
    one.changes = facts.tooltip.substr(0, end);
    if (end != std::string::npos) {
      const std::size_t text = facts.tooltip.find(": ", end);
      if (text != std::string::npos) one.to_peers = facts.tooltip.substr(text + 2);
    }
    const nlohmann::json value = servent.value(facts.name);
    one.on = value.is_boolean() && value.get<bool>();
    all.push_back(std::move(one));
  }
  if (all.empty()) throw Failure("the servent has one behaviour only");
  return all;
}

std::string profile(Servent& servent) {
  const nlohmann::json number = servent.value("behaviour");
  if (!number.is_number_integer()) return "";
  const auto place = number.get<std::int64_t>() - 1;
  return place >= 0 && place < std::ssize(kProfiles) ? kProfiles[place] : "";
}

// With the switches, or (after a change, which one line confirms) without.
void show(const Context& context, Servent& servent, bool whole) {
  const std::string name = profile(servent);
  if (!whole && !context.json) return Context::print("Profile: " + name);
  const std::vector<Switch> all = switches(servent);
  if (context.json) {
    nlohmann::json values = nlohmann::json::object();
    for (const Switch& one : all) values[one.name] = one.on;
    return Context::print_json({{"profile", name}, {"switches", std::move(values)}});
  }
  Table table({"Switch", "On", "What it changes", "What servents that run Classic see of it"});
  for (const Switch& one : all) {
    table.add({one.name, one.on ? "yes" : "no", one.changes, one.to_peers});
  }
  Context::print("Profile: " + name);
  Context::print_table(table, "");
}

void choose(Servent& servent, const std::string& name) {
  for (int place = 0; place < kNamedProfiles; ++place) {
    if (lower(name) == lower(kProfiles[place])) return servent.set("behaviour", place + 1);
  }
  throw Failure("no profile \"" + name + "\"; there are classic and overlay");
}

void turn(Servent& servent, const std::string& name, const std::string& value) {
  const std::vector<Switch> all = switches(servent);
  std::string wanted = lower(name);
  std::replace(wanted.begin(), wanted.end(), '-', '_');
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Switch& one) { return one.name == wanted; });
  if (found == all.end()) {
    throw Failure("no switch \"" + name + "\"; `velmora-cli behaviour` lists them");
  }
  const std::string word = lower(value);
  if (word != "on" && word != "off") throw Failure("a switch is turned on or off");
  servent.set(found->control, word == "on");
}

// A line of the help, from which completion takes the words.
std::string names_to_choose() {
  std::string text = "Names: classic overlay";
  for (const BehaviourSwitch& one : kBehaviourSwitches) text += std::string(" ") + one.name;
  return text;
}

}  // namespace

void add_behaviour_verbs(CLI::App& app, Context& context) {
  struct Given {
    std::string name;
    std::string value;
  };
  auto given = std::make_shared<Given>();
  CLI::App* verb =
      add_verb(app, "behaviour", kEverydayVerbs, "Show or choose how the servent behaves",
               "  velmora-cli behaviour                  the profile and its switches\n"
               "  velmora-cli behaviour overlay          every switch on\n"
               "  velmora-cli behaviour classic          every switch off\n"
               "  velmora-cli behaviour relay on         one switch by itself\n\n" +
                   names_to_choose() + "\n\nThe manual explains the profiles switch by switch.");
  verb->add_option_function<std::string>(
      "PROFILE|SWITCH", [given](const std::string& text) { given->name = argument_text(text); },
      "classic, overlay, or the name of a switch");
  verb->add_option_function<std::string>(
      "on|off", [given](const std::string& text) { given->value = argument_text(text); },
      "What the switch is turned to");
  verb->callback([&context, given] {
    context.action = [&context, given] {
      Servent& servent = context.servent();
      if (!given->value.empty()) {
        turn(servent, given->name, given->value);
      } else if (!given->name.empty()) {
        choose(servent, given->name);
      }
      show(context, servent, given->name.empty());
    };
  });
}

}  // namespace velmora::cli
