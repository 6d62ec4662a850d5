#include "cli/servent.h"

#include <algorithm>

#include "cli/values.h"

namespace velmora::cli {
namespace {

constexpr std::size_t kPage = 2000;                            // rows asked for at a time
constexpr auto kLookAnyway = std::chrono::milliseconds(1000);  // should a notice go missing

Failure wrong_shape(std::string_view what) {
  return Failure("the servent gave an answer of an unknown form (" + std::string(what) + ")");
}

std::vector<std::string> texts(const nlohmann::json& array, std::string_view what) {
  if (!array.is_array()) throw wrong_shape(what);
  std::vector<std::string> out;
  for (const auto& item : array) out.push_back(value_text(item));
  return out;
}

std::string member(const nlohmann::json& object, const char* name) {
  const auto found = object.find(name);
  return found == object.end() ? std::string() : value_text(*found);
}

}  // namespace

std::string List::cell(std::size_t index, std::string_view column) const {
  const auto found = std::find(columns.begin(), columns.end(), column);
  const auto at = static_cast<std::size_t>(found - columns.begin());
  return index < rows.size() && at < rows[index].size() ? rows[index][at] : std::string();
}

std::vector<ControlFacts> Servent::controls() {
  const nlohmann::json result = client_.call("controls");
  if (!result.is_array()) throw wrong_shape("controls");
  std::vector<ControlFacts> out;
  for (const auto& item : result) {
    if (!item.is_object()) throw wrong_shape("controls");
    out.push_back({member(item, "control"), member(item, "kind"), member(item, "page"),
                   member(item, "caption"), member(item, "tooltip"),
                   member(item, "enabled") != "false"});
  }
  return out;
}

nlohmann::json Servent::value(const std::string& control) {
  const nlohmann::json result = client_.call("get", {{"control", control}});
  if (!result.is_object() || !result.contains("value")) throw wrong_shape("get");
  return result["value"];
}

std::string Servent::text(const std::string& control) { return value_text(value(control)); }

std::string Servent::text_or(const std::string& control, const std::string& fallback) {
  try {
    return text(control);
  } catch (const RpcError&) {
    return fallback;
  }
}

std::vector<std::string> Servent::items(const std::string& control) {
  return texts(value(control), "get");
}

List Servent::list(const std::string& control, std::size_t first, std::size_t most) {
  List list;
  list.first = std::max<std::size_t>(first, 1);
  while (true) {
    const std::size_t from = list.first + list.rows.size();
    const std::size_t want = std::max<std::size_t>(std::min(kPage, most - list.rows.size()), 1);
    const nlohmann::json page =
        client_.call("rows", {{"control", control}, {"first", from}, {"count", want}});
    if (!page.is_object() || !page.contains("rows") || !page["rows"].is_array() ||
        !page.contains("total") || !page["total"].is_number_unsigned()) {
      throw wrong_shape("rows");
    }
    list.columns = texts(page.value("columns", nlohmann::json::array()), "rows");
    list.total = page["total"].get<std::size_t>();
    if (most == 0) return list;
    for (const auto& row : page["rows"]) list.rows.push_back(texts(row, "rows"));
    const bool more = list.first + list.rows.size() <= list.total && list.rows.size() < most;
    if (!more || page["rows"].empty()) return list;
  }
}

void Servent::set(const std::string& control, nlohmann::json value) {
  client_.call("set", {{"control", control}, {"value", std::move(value)}});
}

void Servent::press(const std::string& control) { client_.call("press", {{"control", control}}); }

void Servent::enter(const std::string& control, const std::string& text) {
  client_.call("enter", {{"control", control}, {"text", text}});
}

void Servent::act_on_row(std::string_view method, const std::string& control, std::size_t row) {
  client_.call(method, {{"control", control}, {"row", row}});
}

void Servent::subscribe(const std::vector<std::string>& controls) {
  nlohmann::json params = nlohmann::json::object();
  if (!controls.empty()) params["controls"] = controls;
  client_.call("subscribe", std::move(params));
}

bool Servent::wait_until(Clock::time_point deadline, const std::function<bool()>& done) {
  while (!done()) {
    const auto now = Clock::now();
    if (now >= deadline) return false;
    auto until = std::min(deadline, now + kLookAnyway);
    // one look for all the notices that have come together
    while (client_.notice(until)) until = Clock::now();
  }
  return true;
}

void Servent::pass(Clock::time_point until) {
  while (client_.notice(until)) {
  }
}

}  // namespace velmora::cli
