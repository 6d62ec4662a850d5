// The real desktop program, on Qt's offscreen screen: what only the whole of it can show.
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "process/program.h"

namespace velmora::process {
namespace {

using testing::HasSubstr;

// Sets an environment variable for the programs started meanwhile, or takes it away.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = std::make_unique<std::string>(before);
    set(value);
  }
  ~Variable() { set(before_ ? before_->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void set(const char* value) {
    if (value != nullptr) {
      setenv(name_, value, 1);
    } else {
      unsetenv(name_);
    }
  }

  const char* name_;
  std::unique_ptr<std::string> before_;
};

struct Screen {
  Variable platform{"QT_QPA_PLATFORM", "offscreen"};
  Variable theme{"QT_QPA_PLATFORMTHEME", nullptr};
  Variable session{"SESSION_MANAGER", nullptr};
};

std::unique_ptr<Program> velmora(const TemporaryFolder& profile,
                                 std::vector<std::string> more = {}) {
  std::vector<std::string> arguments = {"velmora",  "--profile",  profile.path(),
                                        "--listen", "127.0.0.13", "--verbose"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return std::make_unique<Program>(arguments);
}

TEST(Velmora, NeedsADisplayOnlyForItsWindow) {
  const Variable no_x{"DISPLAY", nullptr}, no_wayland{"WAYLAND_DISPLAY", nullptr},
      no_choice{"QT_QPA_PLATFORM", nullptr};
  for (const auto& [option, answer] : std::vector<std::pair<std::string, std::string>>{
           {"--version", "velmora 0."}, {"--help", "--minimized"}}) {
    const Outcome outcome = run({"velmora", option});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr(answer));
  }
  TemporaryFolder profile;
  for (const char* display : {"", ":31234"}) {
    const Variable unreachable{"DISPLAY", display};
    const Outcome outcome = run({"velmora", "--profile", profile.path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("velmorad"));
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
  }
  EXPECT_TRUE(std::filesystem::is_empty(profile.path()));
}

TEST(Velmora, TellsWhatIsWrongWithItsOptions) {
  const Screen screen;
  const std::vector<std::pair<std::vector<std::string>, std::string>> table = {
      {{"--set", "prot_config=7000"}, "did you mean \"port_config\"?"},
      {{"--listen", "here"}, "here"},
      {{"--profile", "/proc/none/profile"}, "/proc/none/profile"},
  };
  for (const auto& [options, part] : table) {
    TemporaryFolder profile;
    std::vector<std::string> arguments = {"velmora"};
    if (options[0] != "--profile") {
      arguments.insert(arguments.end(), {"--profile", profile.path()});
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = run(arguments);
    EXPECT_NE(outcome.status, 0) << part;
    EXPECT_THAT(outcome.errors, HasSubstr(part));
  }
}

TEST(Velmora, IsDrivenByTheCommandAndEndsInOrder) {
  const Screen screen;
  const auto by_signal = [](int number) {
    return [number](const Program& program, const TemporaryFolder&) { program.signal(number); };
  };
  const auto by_quit = [](const Program&, const TemporaryFolder& profile) {
    EXPECT_EQ(ask(profile, {"quit"}).status, 0);
  };
  const std::vector<std::function<void(const Program&, const TemporaryFolder&)>> ends = {
      by_signal(SIGTERM), by_signal(SIGINT), by_signal(SIGHUP), by_quit};
  for (std::size_t i = 0; i < ends.size(); ++i) {
    TemporaryFolder profile;
    const auto program = velmora(profile, {"--set", "max_in_host=7"});
    ASSERT_TRUE(program->wait_for_error_line("window painted")) << program->errors();
    EXPECT_EQ(ask(profile, {"set", "max_down", std::to_string(40 + i)}).status, 0);
    EXPECT_THAT(ask(profile, {"get", "max_in_host"}).output, HasSubstr("7"));
    ends[i](*program, profile);
    EXPECT_EQ(program->wait(), 0) << program->errors();
    EXPECT_THAT(content(profile.path() + "/settings.toml"),
                HasSubstr("maxdown = \"" + std::to_string(40 + i) + "\""));
    EXPECT_FALSE(std::filesystem::exists(profile.path() + "/control.sock"));
  }
}

TEST(Velmora, SecondStartRaisesTheFirstWindowAndLeavesTheRestAlone) {
  const Screen screen;
  TemporaryFolder profile;
  const auto first = velmora(profile, {"--minimized"});
  ASSERT_TRUE(first->wait_for_line("runs on profile")) << first->errors();
  Control watch(profile);
  watch.say("subscribe", R"({"controls":["frmMain"]})");
  EXPECT_THAT(watch.line(10'000), HasSubstr("result"));
  const auto second = velmora(profile);
  EXPECT_THAT(watch.line(10'000), HasSubstr("frmMain"));
  EXPECT_TRUE(second->wait_for_error_line("already")) << second->errors();
  second->signal(SIGTERM);  // its message box stays open until somebody closes it
  EXPECT_EQ(second->wait(), 1);
  EXPECT_THAT(ask(profile, {"status"}).output, HasSubstr("(window "));
  const std::string folder = std::filesystem::path(profile.path()).filename();
  EXPECT_THAT(ask(profile, {"controls", "--json"}).output,
              HasSubstr("\"Velmora - " + folder + "\""));
  first->signal(SIGTERM);
  EXPECT_EQ(first->wait(), 0);
}

}  // namespace
}  // namespace velmora::process
