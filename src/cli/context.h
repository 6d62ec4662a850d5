// One run of the program: the options that every verb has, the connection to the servent (opened
// when first asked for), and the way results leave: as text for people or as JSON.
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "cli/interrupt.h"
#include "cli/rpc_client.h"
#include "cli/servent.h"
#include "cli/table.h"

namespace CLI {
class App;
class Validator;
}  // namespace CLI

namespace velmora::cli {

inline constexpr const char* kEverydayVerbs = "Everyday verbs";
inline constexpr const char* kEveryControl = "Every control by name";

// The command-line library takes "[a,b]" apart, and options for what they look like. main() puts
// this byte in front of an argument that it must leave alone; unmarked() takes it away again.
inline constexpr char kArgumentMark = '\x1f';
std::string unmarked(std::string_view argument);
// An argument as it was typed, in a form that JSON can carry.
std::string argument_text(std::string_view argument);

class Context {
 public:
  std::string profile;
  bool json = false;
  double timeout = 0;            // seconds; 0: none given
  std::function<void()> action;  // the verb that the command line chose

  Servent& servent();
  // From now on the ending signals end a wait (with Interrupted) instead of the program.
  void watch_interrupt();

  // The end of a wait: what --timeout gives, else so many seconds, else (0) hours away.
  [[nodiscard]] Clock::time_point deadline(double otherwise_seconds) const;

  static void print(std::string_view text);  // already visible text, the line feed added
  static void print_json(const nlohmann::json& value);
  static void note(std::string_view text);  // to standard error
  // The table, or `nothing` when it has no rows.
  static void print_table(const Table& table, std::string_view nothing);
  // A list with the number of each row in front, as a table or as {total, rows: [{row, ...}]}.
  void print_list(const List& list, std::string_view nothing) const;

 private:
  std::unique_ptr<Interrupt> interrupt_;
  std::unique_ptr<RpcClient> client_;
  std::unique_ptr<Servent> servent_;
};

// A verb's subcommand, with examples under its help.
CLI::App* add_verb(CLI::App& app, const char* name, const char* group,
                   const std::string& description, const std::string& examples);

// For options that take a row, a count or a length of time.
CLI::Validator above_zero();
CLI::Validator not_negative();

nlohmann::json list_json(const List& list);
nlohmann::json row_json(const List& list, std::size_t index);
Table list_table(const List& list);
Clock::duration seconds(double count);

}  // namespace velmora::cli
