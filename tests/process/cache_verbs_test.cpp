// The verbs of the host cache against a real servent.
#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

#include "process/program.h"

namespace velmora::process {
namespace {

using testing::HasSubstr;
using testing::Not;

class Cached {
 public:
  explicit Cached(const std::string& file) {
    if (!file.empty()) std::ofstream(profile_.path("Velmora_cache.dat")) << file;
    program_ = servent(profile_, "127.0.0.31");
  }
  std::string ask(std::vector<std::string> words, int status = 0) const {
    const Outcome outcome = process::ask(profile_, std::move(words));
    EXPECT_EQ(outcome.status, status) << outcome.errors;
    return status == 0 ? outcome.output : outcome.errors;
  }
  void end() {
    program_->signal(SIGTERM);
    EXPECT_EQ(program_->wait(), 0);
  }
  std::string file() const { return content(profile_.path() + "/Velmora_cache.dat"); }

 private:
  TemporaryFolder profile_;
  std::unique_ptr<Program> program_;
};

constexpr const char* kFormat =
    "\"Format: Row #, IP, Port, DNS, Files, Size, Date Ponged, Date DNS\"\r\n";
constexpr const char* kRest = "\",6346,\"?\",1,2,#2000-06-30 14:05:00#,#2000-06-30 14:05:00#\r\n";

TEST(CacheVerbs, ListRemoveAndClearWhatTheFileHeld) {
  const std::string hosts[] = {"4.0.0.1", "4.0.0.2", "4.0.0.3"};
  std::string file = std::string("\"Rows in this file:\",3\r\n") + kFormat;
  for (const std::string& host : hosts) file += "1,\"" + host + kRest;
  Cached servent(file);
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
  Cached servent("");
  EXPECT_THAT(servent.ask({"filter", "add", "4.0."}), HasSubstr(" 19      4.0.\n"));
  EXPECT_EQ(servent.ask({"get", "totalfilter_config"}), "19\n");
  EXPECT_THAT(servent.ask({"filter", "remove", "10."}), Not(HasSubstr(" 10.\n")));
  EXPECT_THAT(servent.ask({"filter", "remove", "18"}), Not(HasSubstr("4.0.")));
  EXPECT_THAT(servent.ask({"filter", "remove", "18"}, 1), HasSubstr("there is no row 18"));
  EXPECT_THAT(servent.ask({"filter", "remove", "4.0."}, 1), HasSubstr("no entry 4.0."));
}

}  // namespace
}  // namespace velmora::process
