#include "cli/context.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>

#include "cli/terminal.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr double kAnswerSeconds = 30;
constexpr double kNoEnd = 1e7;  // seconds; some months

CLI::Validator number_check(bool (*is_good)(double), std::string complaint) {
  return {[is_good, complaint = std::move(complaint)](const std::string& text) {
            double number = 0;
            const char* end = text.data() + text.size();
            const auto result = std::from_chars(text.data(), end, number);
            const bool good = result.ec == std::errc() && result.ptr == end && is_good(number);
            return good ? std::string() : "\"" + visible(text) + "\" " + complaint;
          },
          ""};
}

}  // namespace

std::string unmarked(std::string_view argument) {
  if (argument.starts_with(kArgumentMark)) argument.remove_prefix(1);
  return std::string(argument);
}

std::string argument_text(std::string_view argument) { return to_wire(unmarked(argument)); }

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(std::min(count, kNoEnd)));
}

Servent& Context::servent() {
  if (!servent_) {
    const double answer = timeout > 0 ? timeout : kAnswerSeconds;
    client_ = std::make_unique<RpcClient>(
        profile, std::chrono::ceil<std::chrono::milliseconds>(seconds(answer)));
    if (interrupt_) client_->end_when_readable(interrupt_->descriptor());
    servent_ = std::make_unique<Servent>(*client_);
  }
  return *servent_;
}

void Context::watch_interrupt() {
  interrupt_ = std::make_unique<Interrupt>();
  if (client_) client_->end_when_readable(interrupt_->descriptor());
}

Clock::time_point Context::deadline(double otherwise_seconds) const {
  const double length = timeout > 0 ? timeout : otherwise_seconds;
  return Clock::now() + seconds(length > 0 ? length : kNoEnd);
}

void Context::print(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fputc('\n', stdout);
}

void Context::print_json(const nlohmann::json& value) {
  // escaped beyond ASCII, so that a name cannot drive the terminal here either
  print(value.dump(-1, ' ', true));
}

void Context::note(std::string_view text) {
  const std::string line = "velmora-cli: " + visible(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Context::print_table(const Table& table, std::string_view nothing) {
  if (table.rows() == 0) {
    print(nothing);
    return;
  }
  const std::string text = table.text(output_is_terminal() ? terminal_size().columns : 0);
  std::fwrite(text.data(), 1, text.size(), stdout);
}

void Context::print_list(const List& list, std::string_view nothing) const {
  if (json) {
    print_json(list_json(list));
  } else {
    print_table(list_table(list), nothing);
  }
}

CLI::App* add_verb(CLI::App& app, const char* name, const char* group,
                   const std::string& description, const std::string& examples) {
  CLI::App* verb = app.add_subcommand(name, description);
  verb->group(group);
  verb->footer("Examples:\n" + examples +
               "\n\n--profile, --json and --timeout go with every verb: see velmora-cli --help.");
  return verb;
}

CLI::Validator above_zero() {
  return number_check([](double number) { return number > 0; }, "is not a number above 0");
}

CLI::Validator not_negative() {
  return number_check([](double number) { return number >= 0; }, "is not a number from 0 on");
}

nlohmann::json row_json(const List& list, std::size_t index) {
  nlohmann::json row = {{"row", list.first + index}};
  for (const std::string& column : list.columns) row[column] = list.cell(index, column);
  return row;
}

nlohmann::json list_json(const List& list) {
  nlohmann::json rows = nlohmann::json::array();
  for (std::size_t index = 0; index < list.rows.size(); ++index) {
    rows.push_back(row_json(list, index));
  }
  return {{"total", list.total}, {"rows", std::move(rows)}};
}

Table list_table(const List& list) {
  std::vector<std::string> headings = {"Row"};
  headings.insert(headings.end(), list.columns.begin(), list.columns.end());
  Table table(headings);
  for (std::size_t index = 0; index < list.rows.size(); ++index) {
    std::vector<std::string> cells = {std::to_string(list.first + index)};
    cells.insert(cells.end(), list.rows[index].begin(), list.rows[index].end());
    table.add(cells);
  }
  return table;
}

}  // namespace velmora::cli
