// The verbs of the host cache against a real servent, and files in its place that are none.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

#include "process/program.h"

namespace velmora::process {
namespace {

using testing::HasSubstr;
using testing::Not;

class Cached {
 public:
  explicit Cached(const std::function<void(const std::string& path)>& make_file) {
    make_file(profile_.path() + "/Velmora_cache.dat");
    program_ = std::make_unique<Program>(std::vector<std::string>{
        "velmorad", "--profile", profile_.path(), "--listen", "127.0.0.31"});
    EXPECT_TRUE(program_->wait_for_line("runs on profile")) << program_->errors();
  }
  std::string ask(std::vector<std::string> words, int status = 0) const {
    words.insert(words.begin(), {"velmora-cli", "--profile", profile_.path()});
    Program cli(words);
    EXPECT_EQ(cli.wait(), status) << cli.errors();
    return status == 0 ? cli.output() : cli.errors();
  }
  // What it said until its end.
  std::string end() {
    program_->signal(SIGTERM);
    EXPECT_EQ(program_->wait(), 0);
    return program_->errors();
  }
  std::string file() const {
    std::ifstream file(profile_.path() + "/Velmora_cache.dat", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  TemporaryFolder profile_;
  std::unique_ptr<Program> program_;
};

constexpr const char* kFormat =
    "\"Format: Row #, IP, Port, DNS, Files, Size, Date Ponged, Date DNS\"\r\n";
constexpr const char* kRest = "\",6346,\"?\",1,2,#2000-06-30 14:05:00#,#2000-06-30 14:05:00#\r\n";

TEST(CacheVerbs, ListRemoveAndClearWhatTheFileHeld) {
  const std::string hosts[] = {"4.0.0.1", "4.0.0.2", "4.0.0.3"};
  Cached servent([&](const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "\"Rows in this file:\",3\r\n" << kFormat;
    for (const std::string& host : hosts) file << "1,\"" << host << kRest;
  });
  EXPECT_EQ(servent.ask({"cache"}),
            "Row  Hosts         Files  Size Kb  Hop  TTL  Sock\n"
            "  1  4.0.0.1:6346      1        2    0    0     0\n"
            "  2  4.0.0.2:6346      1        2    0    0     0\n"
            "  3  4.0.0.3:6346      1        2    0    0     0\n");
  EXPECT_EQ(servent.ask({"cache", "remove", "2"}), "Removed: 4.0.0.2:6346\n");
  EXPECT_THAT(servent.ask({"cache", "remove", "3"}, 1), HasSubstr("there is no row 3"));
  EXPECT_THAT(servent.ask({"cache", "--json"}), HasSubstr("\"total\":2"));
  EXPECT_EQ(servent.ask({"cache", "clear", "--json"}), "{\"total\":0}\n");
  EXPECT_EQ(servent.ask({"cache"}), "No hosts are remembered.\n");
  EXPECT_THAT(servent.file(), HasSubstr("4.0.0.2"));
  servent.end();
  EXPECT_EQ(servent.file(), std::string("\"Rows in this file:\",0\r\n") + kFormat);
}

TEST(CacheVerbs, EditTheFilterByTextOrRow) {
  Cached servent([](const std::string&) {});
  EXPECT_THAT(servent.ask({"filter", "add", "4.0."}), HasSubstr(" 19      4.0.\n"));
  EXPECT_EQ(servent.ask({"get", "totalfilter_config"}), "19\n");
  EXPECT_THAT(servent.ask({"filter", "remove", "10."}), Not(HasSubstr(" 10.\n")));
  EXPECT_THAT(servent.ask({"filter", "remove", "18"}), Not(HasSubstr("4.0.")));
  EXPECT_THAT(servent.ask({"filter", "remove", "18"}, 1), HasSubstr("there is no row 18"));
  EXPECT_THAT(servent.ask({"filter", "remove", "4.0."}, 1), HasSubstr("no entry 4.0."));
}

TEST(CacheVerbs, AFolderOrAFifoInPlaceOfTheFileIsToldAndLeftAlone) {
  struct Case {
    std::function<void(const std::string&)> make;
    const char* error;
  };
  const Case cases[] = {
      {[](const std::string& path) { std::filesystem::create_directory(path); }, "Is a directory"},
      {[](const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); },
       "Not a regular file"},
  };
  for (const Case& c : cases) {
    Cached servent(c.make);
    EXPECT_THAT(servent.ask({"get", "StatusBar"}),
                HasSubstr("load_cache: " + std::string(c.error)));
    EXPECT_THAT(servent.end(),
                HasSubstr("Problems saving Cache list: save_cache: " + std::string(c.error)));
  }
}

}  // namespace
}  // namespace velmora::process
