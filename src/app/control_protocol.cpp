#include "app/control_protocol.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "app/control_verbs.h"
#include "platform/control_channel.h"
#include "platform/trap.h"
#include "platform/utf8.h"

namespace velmora {
namespace {

using nlohmann::json;

constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;
constexpr int kFailed = -32000;  // what was asked went wrong

const char* const kNothing = "{}";

struct RpcError {
  int code;
  std::string message;
};

json parse(std::string_view line) {
  const auto not_too_deep = [](int depth, json::parse_event_t, json&) {
    if (depth > static_cast<int>(ControlProtocol::kMostDepth)) {
      throw RpcError{kParseError, "the message is nested too deeply"};
    }
    return true;
  };
  try {
    return json::parse(line, not_too_deep);
  } catch (const json::parse_error& error) {
    throw RpcError{kParseError, fmt::format("no valid JSON at byte {}", error.byte)};
  } catch (const json::exception&) {
    throw RpcError{kParseError, "no valid JSON: a number is too large"};
  }
}

json value_json(const ControlValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return as_utf8(*text);
  if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  json list = json::array();
  for (const auto& item : std::get<std::vector<std::string>>(value)) list.push_back(as_utf8(item));
  return list;
}

// A text of a cell; most are plain and need nothing but quotes, and there may be a million of them.
std::string as_json(const std::string& bytes) {
  const bool plain = std::none_of(bytes.begin(), bytes.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte >= 0x7F || c == '"' || c == '\\';
  });
  return plain ? '"' + bytes + '"' : json(as_utf8(bytes)).dump();
}

// The bytes for a text that arrived: those of the field, if it shows that text already.
std::string bytes_for(Control& control, const std::string& text) {
  const std::string* shown = typed_text(control);
  return shown != nullptr && as_utf8(*shown) == text ? *shown : text;
}

std::string error_line(const json& id, int code, std::string_view message) {
  return json{
      {"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", code}, {"message", as_utf8(message)}}}}
      .dump();
}

}  // namespace

struct ControlProtocol::Call {
  std::uint64_t client = 0;
  std::string method;
  json params = json::object();

  [[nodiscard]] bool has(const char* name) const { return params.contains(name); }
  [[nodiscard]] const json& at(const char* name) const {
    const auto found = params.find(name);
    if (found != params.end()) return *found;
    throw RpcError{kInvalidParams, fmt::format("\"{}\" needs the parameter \"{}\"", method, name)};
  }
  [[nodiscard]] std::string text(const char* name) const {
    const json& value = at(name);
    if (value.is_string()) return value.get<std::string>();
    throw RpcError{kInvalidParams, fmt::format("\"{}\" must be a text", name)};
  }
  [[nodiscard]] std::int64_t whole_number(const char* name) const {
    const json& value = at(name);
    const bool fits = value.is_number_unsigned()
                          ? value.get<std::uint64_t>() <= std::uint64_t{INT64_MAX}
                          : value.is_number_integer();
    if (fits) return value.get<std::int64_t>();
    throw RpcError{kInvalidParams, fmt::format("\"{}\" must be a whole number", name)};
  }
};

struct ControlProtocol::Method {
  std::string_view name;
  std::vector<std::string_view> params;
  std::string (ControlProtocol::*run)(const Call& call);
};

const std::vector<ControlProtocol::Method>& ControlProtocol::methods() {
  static const std::vector<Method> kMethods = {
      {"controls", {}, &ControlProtocol::controls},
      {"get", {"control"}, &ControlProtocol::get},
      {"set", {"control", "value"}, &ControlProtocol::set},
      {"press", {"control"}, &ControlProtocol::press_control},
      {"enter", {"control", "text"}, &ControlProtocol::enter},
      {"remove", {"control", "row"}, &ControlProtocol::remove},
      {"rows", {"control", "first", "count"}, &ControlProtocol::rows},
      {"select", {"control", "row"}, &ControlProtocol::select},
      {"activate", {"control", "row"}, &ControlProtocol::activate},
      {"subscribe", {"controls"}, &ControlProtocol::subscribe},
      {"quit", {}, &ControlProtocol::quit},
  };
  return kMethods;
}

ControlProtocol::ControlProtocol(ControlRegistry& form, EventLoop& loop, SendLine send,
                                 Handler on_quit)
    : form_(form), loop_(loop), send_(std::move(send)), on_quit_(std::move(on_quit)) {}

ControlProtocol::~ControlProtocol() {
  *alive_ = false;
  if (watch_ != 0) form_.unwatch(watch_);
}

std::string ControlProtocol::handle(std::uint64_t client, std::string_view line) {
  json id = nullptr;
  bool wants_answer = true;
  std::string out;
  try {
    json request = parse(line);
    if (!request.is_object()) {
      throw RpcError{kInvalidRequest, "a message must be one JSON object"};
    }
    if (const auto found = request.find("id"); found != request.end()) {
      if (!found->is_string() && !found->is_number() && !found->is_null()) {
        throw RpcError{kInvalidRequest, "\"id\" must be a text or a number"};
      }
      id = std::move(*found);
    } else {
      wants_answer = false;
    }
    const auto version = request.find("jsonrpc");
    const auto method = request.find("method");
    if (version == request.end() || *version != "2.0" || method == request.end() ||
        !method->is_string()) {
      wants_answer = true;
      throw RpcError{kInvalidRequest, "a message needs \"jsonrpc\": \"2.0\" and a \"method\""};
    }
    Call call;
    call.client = client;
    call.method = method->get<std::string>();
    if (request.contains("params")) call.params = std::move(request["params"]);
    const std::string result = answer(call);
    out = fmt::format(R"({{"id":{},"jsonrpc":"2.0","result":{}}})", id.dump(), result);
    if (out.size() > kMostAnswerBytes) throw RpcError{kFailed, "the answer is too long"};
  } catch (const RpcError& error) {
    out = error_line(id, error.code, error.message);
  } catch (const ControlError& error) {
    out = error_line(id, kInvalidParams, error.what());
  } catch (const std::exception&) {
    out = error_line(id, kFailed, description_of_current_error());
  }
  return wants_answer ? out : std::string();
}

std::string ControlProtocol::answer(const Call& call) {
  const auto& table = methods();
  const auto method = std::find_if(table.begin(), table.end(),
                                   [&](const Method& row) { return row.name == call.method; });
  if (method == table.end()) {
    std::vector<std::string_view> names;
    names.reserve(table.size());
    for (const Method& row : table) names.push_back(row.name);
    throw RpcError{kMethodNotFound, fmt::format("no method \"{}\"{}", shown_name(call.method),
                                                suggestion(call.method, names))};
  }
  if (!call.params.is_object()) {
    throw RpcError{kInvalidParams, "\"params\" must be an object with named parameters"};
  }
  for (const auto& [name, value] : call.params.items()) {
    const auto& known = method->params;
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      throw RpcError{kInvalidParams, fmt::format("\"{}\" has no parameter \"{}\"{}", method->name,
                                                 shown_name(name), suggestion(name, known))};
    }
  }
  return (this->*method->run)(call);
}

Control& ControlProtocol::control_of(const Call& call) const {
  return named_control(form_, call.text("control"));
}

std::string ControlProtocol::controls(const Call&) {
  json list = json::array();
  form_.for_each([&](Control& control) {
    list.push_back({{"control", as_utf8(control.name())},
                    {"kind", kind_name(control)},
                    {"page", page_name(control.page())},
                    {"caption", as_utf8(control.caption())},
                    {"tooltip", as_utf8(control.tooltip())},
                    {"enabled", control.enabled()}});
  });
  return list.dump();
}

std::string ControlProtocol::get(const Call& call) {
  return json{{"value", value_json(value_of(control_of(call)))}}.dump();
}

std::string ControlProtocol::set(const Call& call) {
  Control& control = control_of(call);
  const json& value = call.at("value");
  if (value.is_string()) {
    set_value(control, bytes_for(control, value.get<std::string>()));
  } else if (value.is_boolean()) {
    set_value(control, value.get<bool>());
  } else if (value.is_number_integer()) {
    set_value(control, call.whole_number("value"));
  } else {
    throw RpcError{kInvalidParams, "\"value\" must be a text, a whole number, true or false"};
  }
  return kNothing;
}

std::string ControlProtocol::press_control(const Call& call) {
  press(control_of(call));
  return kNothing;
}

std::string ControlProtocol::enter(const Call& call) {
  Control& control = control_of(call);
  enter_text(control, bytes_for(control, call.text("text")));
  return kNothing;
}

std::string ControlProtocol::remove(const Call& call) {
  remove_row(control_of(call), call.whole_number("row"));
  return kNothing;
}

// Written piece by piece: a list may have 200,000 rows.
std::string ControlProtocol::rows(const Call& call) {
  const ListView& list = list_view(control_of(call));
  const std::int64_t first = call.has("first") ? call.whole_number("first") : 1;
  const std::int64_t count = call.has("count") ? call.whole_number("count") : INT64_MAX;
  if (first < 1) throw RpcError{kInvalidParams, "\"first\" counts from 1"};
  if (count < 0) throw RpcError{kInvalidParams, "\"count\" must not be negative"};
  json columns = json::array();
  for (const std::string& column : list.columns()) columns.push_back(as_utf8(column));

  std::string out = fmt::format(R"({{"columns":{},"rows":[)", columns.dump());
  const auto total = static_cast<std::int64_t>(list.rows());
  const std::int64_t last = count > total - first ? total : first + count - 1;
  for (std::int64_t row = first; row <= last; ++row) {
    out += row == first ? "[" : ",[";
    for (std::size_t column = 1; column <= list.columns().size(); ++column) {
      if (column > 1) out += ',';
      out += as_json(list.cell(static_cast<std::size_t>(row), column));
    }
    out += ']';
    if (out.size() > kMostAnswerBytes) {
      throw RpcError{kFailed, fmt::format("the rows of \"{}\" are too long for one answer; ask for "
                                          "parts with \"first\" and \"count\"",
                                          list.name())};
    }
  }
  return out + fmt::format(R"(],"total":{}}})", total);
}

std::string ControlProtocol::select(const Call& call) {
  select_row(control_of(call), call.whole_number("row"));
  return kNothing;
}

std::string ControlProtocol::activate(const Call& call) {
  activate_row(control_of(call), call.whole_number("row"));
  return kNothing;
}

// A new subscription takes the place of the client's old one.
std::string ControlProtocol::subscribe(const Call& call) {
  Subscription subscription;
  subscription.all = !call.has("controls");
  if (!subscription.all) {
    const json& names = call.at("controls");
    if (!names.is_array()) throw RpcError{kInvalidParams, "\"controls\" must be a list of names"};
    for (const json& name : names) {
      if (!name.is_string()) throw RpcError{kInvalidParams, "a control's name must be a text"};
      subscription.controls.insert(&named_control(form_, name.get<std::string>()));
    }
  }
  if (!subscriptions_.contains(call.client) && subscriptions_.size() >= kMaxControlClients) {
    throw RpcError{kFailed, "too many subscribers"};
  }
  subscriptions_[call.client] = std::move(subscription);
  if (watch_ == 0) watch_ = form_.watch([this](Control& control) { on_change(control); });
  return kNothing;
}

std::string ControlProtocol::quit(const Call&) {
  loop_.post([this, alive = alive_] {
    if (*alive && on_quit_) on_quit_();
  });
  return kNothing;
}

void ControlProtocol::forget(std::uint64_t client) {
  subscriptions_.erase(client);
  if (!subscriptions_.empty() || watch_ == 0) return;
  form_.unwatch(watch_);
  watch_ = 0;
}

void ControlProtocol::on_change(Control& control) {
  if (std::find(changed_.begin(), changed_.end(), &control) != changed_.end()) return;
  changed_.push_back(&control);
  if (changed_.size() > 1) return;
  loop_.post([this, alive = alive_] {
    if (*alive) tell_subscribers();
  });
}

void ControlProtocol::tell_subscribers() {
  const std::vector<Control*> changed = std::exchange(changed_, {});
  std::vector<std::pair<std::uint64_t, std::string>> notices;  // sending may end a client
  for (const auto& [client, subscription] : subscriptions_) {
    for (Control* control : changed) {
      if (!subscription.all && !subscription.controls.contains(control)) continue;
      notices.emplace_back(client, json{{"jsonrpc", "2.0"},
                                        {"method", "changed"},
                                        {"params", {{"control", as_utf8(control->name())}}}}
                                       .dump());
    }
  }
  for (const auto& [client, line] : notices) send_(client, line);
}

}  // namespace velmora
