#include "app/control_protocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "app/control_socket.h"
#include "app/control_verbs.h"
#include "form/form.h"
#include "platform/error.h"

namespace velmora {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

// A loop that turns when the test says so.
class HandTurnedLoop : public EventLoop {
 public:
  std::unique_ptr<Timer> make_timer(int, std::function<void()>) override { return nullptr; }
  void post(std::function<void()> continuation) override {
    posted_.push_back(std::move(continuation));
  }
  [[nodiscard]] std::int64_t now_ms() const override { return 0; }
  [[nodiscard]] LocalTime local_time() const override { return {}; }
  std::size_t turn() {
    const auto now = std::exchange(posted_, {});
    for (const auto& continuation : now) continuation();
    return now.size();
  }

 private:
  std::vector<std::function<void()>> posted_;
};

struct Hosts : ListSource {
  std::size_t count = 0;
  [[nodiscard]] std::size_t rows() const override { return count; }
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override {
    return column == 1 ? "h\xE9" + std::to_string(row) : std::to_string(column);
  }
};

class Protocol : public testing::Test {
 protected:
  json call_line(const std::string& line) {
    const std::string answer = protocol_->handle(1, line);
    EXPECT_EQ(answer.find('\n'), std::string::npos);
    return json::parse(answer);
  }
  json call(const std::string& method, const json& params = json::object()) {
    json answer = call_line(
        json{{"jsonrpc", "2.0"}, {"id", 7}, {"method", method}, {"params", params}}.dump());
    EXPECT_EQ(answer.at("id"), 7);
    EXPECT_EQ(answer.at("jsonrpc"), "2.0");
    return answer;
  }
  json result(const std::string& method, const json& params = json::object()) {
    const json answer = call(method, params);
    EXPECT_TRUE(answer.contains("result")) << answer;
    return answer.value("result", json());
  }
  std::string error(const std::string& method, const json& params = json::object()) {
    const json answer = call(method, params);
    return answer.contains("error") ? answer["error"].at("message").get<std::string>() : "none";
  }
  json value(const std::string& control) { return result("get", {{"control", control}})["value"]; }

  Form form_;
  HandTurnedLoop loop_;
  std::vector<std::string> sent_;
  int quits_ = 0;
  std::unique_ptr<ControlProtocol> protocol_ = std::make_unique<ControlProtocol>(
      form_, loop_,
      [this](std::uint64_t client, std::string_view line) {
        const json notice = json::parse(line);
        EXPECT_EQ(notice.at("method"), "changed");
        EXPECT_FALSE(notice.contains("id"));
        sent_.push_back(std::to_string(client) + " " +
                        notice.at("params").at("control").get<std::string>());
      },
      [this] { ++quits_; });
};

TEST_F(Protocol, ControlsTellsWhatThereIs) {
  form_.connect_auto.set_enabled(false);
  const json list = result("controls");
  json connect;
  std::size_t count = 0;
  form_.for_each([&](Control&) { ++count; });
  EXPECT_EQ(list.size(), count);
  for (const json& row : list) {
    if (row.at("control") == "connect_auto") connect = row;
  }
  EXPECT_EQ(connect,
            (json{{"control", "connect_auto"},
                  {"kind", "button"},
                  {"page", "Hosts"},
                  {"caption", "Connect"},
                  {"tooltip", "Connects to several hosts until the max Outgoing limit is reached"},
                  {"enabled", false}}));
}

TEST_F(Protocol, GetGivesEachKindItsOwnValue) {
  form_.StatusBar.set_panel(1, "first");
  form_.StatusBar.set_panel(2, "second");
  form_.frmDebug.set_text("log\r\n");
  form_.upload_config.add("/a");
  form_.upload_config.add("/b");
  const std::vector<std::pair<std::string, json>> rows = {{"port_config", "6346"},
                                                          {"connect_dns", false},
                                                          {"traffic_view", true},
                                                          {"search_num", 1},
                                                          {"pack_upload", 4096},
                                                          {"upload_config", {"/a", "/b"}},
                                                          {"cachefilter_config", json::array()},
                                                          {"StatusBar", "first"},
                                                          {"frmDebug", "log\r\n"},
                                                          {"frmUnknown", ""},
                                                          {"frmMain", true},
                                                          {"frmColor", false},
                                                          {"totalsearch", "0"},
                                                          {"but_b_sel", -2147483633},
                                                          {"mascot2", false}};
  for (const auto& [control, expected] : rows) EXPECT_EQ(value(control), expected) << control;
  EXPECT_EQ(error("get", {{"control", "lcache"}}),
            "\"lcache\" is a list view: \"rows\" gives its rows");
}

TEST_F(Protocol, SetIsAsIfTypedOrMoved) {
  int handlers = 0;
  form_.speed_upload.on_change = form_.show_dns.on_change = form_.search_num.on_choose =
      form_.port_config.on_enter = [&] { ++handlers; };
  EXPECT_EQ(result("set", {{"control", "port_config"}, {"value", "80\xC3\xBF"}}), json::object());
  EXPECT_EQ(form_.port_config.text(), "80\xC3\xBF");
  EXPECT_EQ(handlers, 0);  // typed, not entered
  result("set", {{"control", "speed_upload"}, {"value", 2000}});
  result("set", {{"control", "show_dns"}, {"value", true}});
  result("set", {{"control", "show_dns"}, {"value", true}});
  result("set", {{"control", "search_num"}, {"value", 3}});
  result("set", {{"control", "upload_config"}, {"value", "/x"}});
  EXPECT_EQ(handlers, 3);
  EXPECT_EQ(form_.speed_upload.position(), 2000);
  EXPECT_TRUE(form_.show_dns.checked());
  EXPECT_EQ(form_.search_num.chosen(), 3);
  EXPECT_EQ(form_.upload_config.text(), "/x");
  EXPECT_TRUE(form_.upload_config.items().empty());

  form_.upport_config.set_enabled(false);
  const std::vector<std::pair<json, std::string>> rows = {
      {{{"control", "port_config"}, {"value", 80}}, "\"port_config\" takes a text"},
      {{{"control", "port_config"}, {"value", nullptr}},
       "\"value\" must be a text, a whole number, true or false"},
      {{{"control", "port_config"}}, "\"set\" needs the parameter \"value\""},
      {{{"control", "show_dns"}, {"value", 1}}, "\"show_dns\" takes true or false"},
      {{{"control", "speed_upload"}, {"value", 2001}},
       "\"speed_upload\" takes a whole number from 0 to 2000, not 2001"},
      {{{"control", "speed_upload"}, {"value", "1"}}, "\"speed_upload\" takes a whole number"},
      {{{"control", "speed_upload"}, {"value", 18446744073709551615U}},
       "\"value\" must be a whole number"},
      {{{"control", "search_num"}, {"value", 0}},
       "\"search_num\" takes a whole number from 1 to 3, not 0"},
      {{{"control", "net_stat"}, {"value", "1"}}, "\"net_stat\" is a label: it cannot be set"},
      {{{"control", "upport_config"}, {"value", "1"}}, "\"upport_config\" is not enabled"}};
  for (const auto& [params, message] : rows) EXPECT_EQ(error("set", params), message) << params;
  EXPECT_EQ(form_.speed_upload.position(), 2000);
}

TEST_F(Protocol, TextsRoundTripWhateverTheirBytes) {
  for (const std::string& bytes : {std::string("caf\xC3\xA9"), std::string("caf\xE9"),
                                   std::string("\xFF\xC3\xBF"), std::string("nul\0\x1B", 5)}) {
    form_.down_config.set_text(bytes);
    const json shown = value("down_config");
    result("set", {{"control", "down_config"}, {"value", shown}});
    EXPECT_EQ(form_.down_config.text(), bytes);
    result("enter", {{"control", "down_config"}, {"text", shown}});
    EXPECT_EQ(form_.down_config.text(), bytes);
  }
  form_.down_config.set_text("caf\xE9");
  EXPECT_EQ(value("down_config"), "caf\xC3\xA9");
}

TEST_F(Protocol, PressIsAClick) {
  std::vector<std::string> pressed;
  const auto note = [&](const char* name) {
    return [&pressed, name] { pressed.emplace_back(name); };
  };
  form_.more_cache.on_click = note("button");
  form_.unknown_stat.on_click = note("label");
  form_.mnushow.on_click = note("menu");
  form_.mascot1.on_move = note("picture");
  for (const char* name : {"more_cache", "unknown_stat", "mnushow", "mascot1", "show_dns"}) {
    EXPECT_EQ(result("press", {{"control", name}}), json::object());
  }
  EXPECT_THAT(pressed, ElementsAre("button", "label", "menu", "picture"));
  EXPECT_TRUE(form_.show_dns.checked());

  form_.more_cache.set_enabled(false);
  form_.clear_cache.on_click = [] { throw PlatformError(Errc::disk_full); };
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"more_cache", "\"more_cache\" is not enabled"},
      {"mascot2", "\"mascot2\" is not shown"},
      {"net_stat", "\"net_stat\" is a label: it does nothing on a click"},
      {"pgbut", "\"pgbut\" is an option group: it cannot be pressed"},
      {"clear_cache", "No space left on device"}};
  for (const auto& [name, message] : rows) EXPECT_EQ(error("press", {{"control", name}}), message);
  EXPECT_EQ(pressed.size(), 4U);
}

TEST_F(Protocol, EnterAndRemoveWorkOnListsOfTexts) {
  form_.upload_config.on_enter = [this] { form_.upload_config.add(form_.upload_config.text()); };
  form_.upload_config.on_delete = [this](std::size_t row) { form_.upload_config.remove_item(row); };
  for (const char* path : {"/a", "/b"}) {
    result("enter", {{"control", "upload_config"}, {"text", path}});
  }
  EXPECT_EQ(error("remove", {{"control", "upload_config"}, {"row", 3}}),
            "\"upload_config\" has no row 3; it has 2 rows");
  EXPECT_EQ(error("remove", {{"control", "upload_config"}, {"row", -1}}),
            "\"upload_config\" has no row -1; it has 2 rows");
  EXPECT_EQ(error("remove", {{"control", "upload_config"}, {"row", 1.5}}),
            "\"row\" must be a whole number");
  result("remove", {{"control", "upload_config"}, {"row", 1}});
  EXPECT_EQ(value("upload_config"), json({"/b"}));
  EXPECT_EQ(error("enter", {{"control", "show_dns"}, {"text", ""}}),
            "\"show_dns\" is a check box: it takes no Enter key");
  EXPECT_EQ(error("remove", {{"control", "lcache"}, {"row", 1}}),
            "\"lcache\" is a list view: no row of it can be deleted");
}

TEST_F(Protocol, RowsAreGivenAsTheyAreShown) {
  Hosts hosts;
  form_.lcache.set_source(&hosts);
  hosts.count = 3;
  form_.lcache.redraw();
  const json all = result("rows", {{"control", "lcache"}});
  EXPECT_EQ(all.at("columns"), json({"Hosts", "Files", "Size Kb", "Hop", "TTL", "Sock"}));
  EXPECT_EQ(all.at("total"), 3);
  ASSERT_EQ(all.at("rows").size(), 3U);
  EXPECT_EQ(all.at("rows")[2], json({std::string("h\xC3\xA9") + "3", "2", "3", "4", "5", "6"}));

  // of every row the fourth cell and the row's number
  const auto cells_of = [&](const json& params) {
    const json shown = result("rows", params);
    std::string cells;
    for (const json& row : shown.at("rows")) {
      cells += row[3].get<std::string>() + row[0].get<std::string>().substr(3);
    }
    return cells;
  };
  EXPECT_EQ(cells_of({{"control", "lcache"}, {"first", 2}}), "4243");
  EXPECT_EQ(cells_of({{"control", "lcache"}, {"first", 2}, {"count", 1}}), "42");
  EXPECT_EQ(cells_of({{"control", "lcache"}, {"first", 3}, {"count", INT64_MAX}}), "43");
  EXPECT_EQ(cells_of({{"control", "lcache"}, {"first", INT64_MAX}, {"count", INT64_MAX}}), "");
  EXPECT_EQ(cells_of({{"control", "lcache"}, {"count", 0}}), "");
  EXPECT_EQ(error("rows", {{"control", "lcache"}, {"first", 0}}), "\"first\" counts from 1");
  EXPECT_EQ(error("rows", {{"control", "lcache"}, {"count", -1}}),
            "\"count\" must not be negative");
  EXPECT_EQ(error("rows", {{"control", "upload_config"}}),
            "\"upload_config\" is a combo list: it is no list view");

  hosts.count = 2000000;
  form_.lcache.redraw();
  EXPECT_THAT(error("rows", {{"control", "lcache"}}), HasSubstr("too long for one answer"));
  EXPECT_EQ(cells_of({{"control", "lcache"}, {"first", 2000000}}), "42000000");
}

TEST_F(Protocol, SelectAndActivateARow) {
  Hosts hosts;
  hosts.count = 2;
  form_.lHosts.set_source(&hosts);
  form_.lHosts.redraw();
  std::size_t activated = 0;
  form_.lHosts.on_activate = [&](std::size_t row) { activated = row; };
  result("select", {{"control", "lHosts"}, {"row", 2}});
  EXPECT_EQ(form_.lHosts.selected(), 2U);
  EXPECT_EQ(activated, 0U);
  result("activate", {{"control", "lHosts"}, {"row", 1}});
  EXPECT_EQ(activated, 1U);
  EXPECT_EQ(error("activate", {{"control", "lHosts"}, {"row", 3}}),
            "\"lHosts\" has no row 3; it has 2 rows");
}

TEST_F(Protocol, NoticesAreCoalescedInOneTurn) {
  result("subscribe");
  protocol_->handle(2, R"({"jsonrpc":"2.0","id":1,"method":"subscribe",
                           "params":{"controls":["StatusBar"]}})");
  form_.StatusBar.set_panel(1, "a");
  form_.totalsearch.set_text("1");
  form_.StatusBar.set_panel(1, "b");
  EXPECT_TRUE(sent_.empty());
  EXPECT_EQ(loop_.turn(), 1U);
  EXPECT_THAT(sent_, ElementsAre("1 StatusBar", "1 totalsearch", "2 StatusBar"));

  sent_.clear();
  EXPECT_EQ(error("subscribe", {{"controls", {"lhost"}}}),
            "no control \"lhost\"; did you mean \"lHosts\"?");  // the old subscription stays
  form_.totalsearch.set_text("2");
  protocol_->forget(2);
  loop_.turn();
  EXPECT_THAT(sent_, ElementsAre("1 totalsearch"));
  result("subscribe", {{"controls", json::array()}});
  form_.totalsearch.set_text("3");
  loop_.turn();
  EXPECT_EQ(sent_.size(), 1U);
  protocol_->forget(1);
  form_.totalsearch.set_text("4");
  EXPECT_EQ(loop_.turn(), 0U);  // nobody listens
}

TEST_F(Protocol, QuitComesAfterTheAnswerAndNothingAfterTheEnd) {
  EXPECT_EQ(result("quit"), json::object());
  EXPECT_EQ(quits_, 0);
  loop_.turn();
  EXPECT_EQ(quits_, 1);

  result("quit");
  result("subscribe");
  form_.totalsearch.set_text("1");
  protocol_.reset();
  form_.totalsearch.set_text("2");
  loop_.turn();
  EXPECT_EQ(quits_, 1);
  EXPECT_TRUE(sent_.empty());
}

TEST_F(Protocol, WrongMessagesAreAnsweredWithWhatIsWrong) {
  struct Row {
    std::string line;
    int code;
    std::string message;
  };
  const std::string deep(1 << 20, '[');
  const std::vector<Row> rows = {
      {"", -32700, "no valid JSON"},
      {"{", -32700, "no valid JSON"},
      {"{\"id\":\"\xFF\"}", -32700, "no valid JSON"},
      {R"({"id":1e999})", -32700, "no valid JSON"},
      {deep, -32700, "nested too deeply"},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":)" + deep, -32700, "nested too deeply"},
      {"[]", -32600, "one JSON object"},
      {"7", -32600, "one JSON object"},
      {R"({"jsonrpc":"2.0","id":{},"method":"get"})", -32600, "\"id\" must be"},
      {R"({"id":1,"method":"get"})", -32600, "\"jsonrpc\": \"2.0\""},
      {R"({"jsonrpc":"2.0","id":1,"method":3})", -32600, "\"method\""},
      {R"({"jsonrpc":"2.0","id":1,"method":"gett"})", -32601,
       "no method \"gett\"; did you mean \"get\"?"},
      {R"({"jsonrpc":"2.0","id":1,"method":"xyzzy"})", -32601, "no method \"xyzzy\""},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":["port_config"]})", -32602,
       "\"params\" must be an object"},
      {R"({"jsonrpc":"2.0","id":1,"method":"get"})", -32602,
       "\"get\" needs the parameter \"control\""},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":{"controll":"port_config"}})", -32602,
       "\"get\" has no parameter \"controll\"; did you mean \"control\"?"},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":{"control":5}})", -32602,
       "\"control\" must be a text"},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":{"control":"prot_config"}})", -32602,
       "no control \"prot_config\"; did you mean \"port_config\"?"},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":{"control":"lhosts"}})", -32602,
       "no control \"lhosts\"; did you mean \"lHosts\"?"},
      {R"({"jsonrpc":"2.0","id":1,"method":"get","params":{"control":"qqqqqqqqqqqq"}})", -32602,
       "no control \"qqqqqqqqqqqq\""}};
  for (const Row& row : rows) {
    const json answer = call_line(row.line);
    ASSERT_TRUE(answer.contains("error")) << row.line.substr(0, 99);
    EXPECT_EQ(answer["error"]["code"], row.code) << row.line.substr(0, 99);
    EXPECT_THAT(answer["error"]["message"].get<std::string>(), HasSubstr(row.message));
  }
  EXPECT_EQ(error("get", {{"control", "qqqqqqqqqqqq"}}), "no control \"qqqqqqqqqqqq\"");

  std::string long_name = "x";  // a long name is cut between two characters
  for (int i = 0; i < 1000; ++i) long_name += "\xC3\xBF";
  EXPECT_LT(error("get", {{"control", long_name}}).size(), 100U);
  EXPECT_LT(error(long_name).size(), 100U);
}

TEST_F(Protocol, NotificationsAreDoneButNotAnswered) {
  EXPECT_EQ(protocol_->handle(1, R"({"jsonrpc":"2.0","method":"set",
                                     "params":{"control":"port_config","value":"9"}})"),
            "");
  EXPECT_EQ(form_.port_config.text(), "9");
  EXPECT_EQ(protocol_->handle(1, R"({"jsonrpc":"2.0","method":"nonsense"})"), "");
  const json answer = call_line(R"({"jsonrpc":"2.0","id":"a\u00ff","method":"get",
                                    "params":{"control":"port_config"}})");
  EXPECT_EQ(answer, (json{{"jsonrpc", "2.0"}, {"id", "a\xC3\xBF"}, {"result", {{"value", "9"}}}}));
}

TEST_F(Protocol, SetFromTextTakesWordsAsOnACommandLine) {
  set_from_text(form_.port_config, "7000");
  set_from_text(form_.show_dns, "On");
  set_from_text(form_.traffic_view, "0");
  set_from_text(form_.speed_upload, "20");
  EXPECT_EQ(form_.port_config.text(), "7000");
  EXPECT_TRUE(form_.show_dns.checked());
  EXPECT_FALSE(form_.traffic_view.checked());
  EXPECT_EQ(form_.speed_upload.position(), 20);
  for (const char* text : {"", "fast", "20x", "3000", "99999999999999999999"}) {
    EXPECT_THROW(set_from_text(form_.speed_upload, text), ControlError) << text;
  }
  EXPECT_THROW(set_from_text(form_.show_dns, "perhaps"), ControlError);
}

struct Channel : ControlChannel {
  ControlChannelEvents* events = nullptr;
  std::vector<std::string> lines;
  int closes = 0;
  void open(const std::string& name, ControlChannelEvents& to) override {
    EXPECT_EQ(name, "control.sock");
    events = &to;
  }
  void send_line(std::uint64_t client, std::string_view line) override {
    lines.push_back(std::to_string(client) + std::string(line));
  }
  void close() override { ++closes; }
};

TEST(ControlSocket, CarriesLinesBothWaysWhileItIsOpen) {
  Form form;
  HandTurnedLoop loop;
  Channel channel;
  int quits = 0;
  {
    ControlSocket socket(form, loop, channel, [&] { ++quits; });
    EXPECT_EQ(channel.events, nullptr);
    socket.open();
    channel.events->on_client_line(5, R"({"jsonrpc":"2.0","id":1,"method":"subscribe"})");
    channel.events->on_client_line(5, R"({"jsonrpc":"2.0","method":"quit"})");
    EXPECT_THAT(channel.lines, ElementsAre(R"(5{"id":1,"jsonrpc":"2.0","result":{}})"));
    form.totalsearch.set_text("1");
    loop.turn();
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(channel.lines.size(), 2U);
    channel.events->on_client_gone(5);
    form.totalsearch.set_text("2");
    EXPECT_EQ(loop.turn(), 0U);
    socket.close();
    channel.events->on_client_line(5, R"({"jsonrpc":"2.0","id":1,"method":"controls"})");
    EXPECT_EQ(channel.lines.size(), 2U);
  }
  EXPECT_EQ(channel.closes, 1);
}

}  // namespace
}  // namespace velmora
