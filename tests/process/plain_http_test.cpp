// The switch plain_http with the programs that it is for: curl and wget fetch from velmorad, and
// velmorad from nginx. All on loopback; every program ends with its test.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "process/program.h"
#include "support/wire.h"

namespace velmora::process {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr const char* kCurl = "/usr/bin/curl";
constexpr const char* kWget = "/usr/bin/wget";
constexpr const char* kNginx = "/usr/sbin/nginx";

void put(const fs::path& path, const std::string& data) {
  std::ofstream(path, std::ios::binary) << data;
}

std::string some_bytes() {
  std::string bytes;
  for (unsigned i = 0; i < 700'000; ++i) bytes += static_cast<char>(i * i % 251);
  return bytes;
}

std::vector<std::string> plain(std::vector<std::string> options) {
  options.insert(options.end(), {"--set", "plain_http_behaviour=on"});
  return options;
}

bool wait_for_row(const Resident& resident, const std::string& list, const std::string& text) {
  return resident.wait_for(list, [&] {
    return resident.ask({"rows", list}).output.find(text) != std::string::npos;
  });
}

TEST(PlainHttp, CurlAndWgetFetchAndResume) {
  TemporaryFolder music, fetched;
  const std::string song = some_bytes();
  put(music.path() + "/a song.bin", song);
  const Resident resident("127.0.0.31",
                          plain({"--set", "pack_upload=65536", "--set", "speed_upload=0"}));
  ASSERT_EQ(resident.ask({"share", music.path()}).status, 0);
  const std::string url = "http://127.0.0.31:6345/get/1/a%20song.bin";
  const std::string file = fetched.path() + "/fetched";

  const Outcome whole = run({kCurl, "-sS", "-f", "-o", file, url});
  EXPECT_EQ(whole.status, 0) << whole.errors;
  EXPECT_EQ(content(file), song);
  EXPECT_TRUE(wait_for_row(resident, "lupload", "Done"));
  put(file, song.substr(0, 300'001));
  const Outcome resumed = run({kCurl, "-sS", "-f", "-C", "-", "-o", file, url});
  EXPECT_EQ(resumed.status, 0) << resumed.errors;
  EXPECT_EQ(content(file), song);
  EXPECT_EQ(run({kCurl, "-sS", "-r", "10-19", url}).output, song.substr(10, 10));
  EXPECT_EQ(run({kCurl, "-sS", "-r", "-5", url}).output, song.substr(song.size() - 5));
  EXPECT_THAT(run({kCurl, "-sS", "-I", url}).output, HasSubstr("Content-Length: 700000\r\n"));
  EXPECT_EQ(run({kCurl, "-sS", "-f", url + "x"}).status, 22) << "curl's word for a 404";

  for (const std::size_t there : {0U, 300'001U, 700'000U}) {
    fs::remove(file);
    if (there > 0) put(file, song.substr(0, there));
    const Outcome by_wget = run({kWget, "-nv", "-c", "-T", "10", "-t", "1", "-O", file, url});
    EXPECT_EQ(by_wget.status, 0) << by_wget.errors;
    EXPECT_EQ(content(file), song) << there;
  }
}

// nginx in the foreground of a folder of its own, serving /get/5/... from there.
class Nginx {
 public:
  Nginx(const TemporaryFolder& folder, const std::string& address, const std::string& limit) {
    const std::string& home = folder.path();
    fs::create_directories(home + "/www/get/5");
    std::string text = "daemon off; master_process off; pid " + home + "/pid;\n" +
                       "error_log stderr notice; events {}\nhttp { access_log " + home + "/log;\n";
    for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
      text += std::string(kind) + "_temp_path " + home + "/" + kind + ";\n";
    }
    text += "server { listen " + address + "; root " + home + "/www; " + limit + " } }\n";
    put(home + "/conf", text);
    program_ = std::make_unique<Program>(
        std::vector<std::string>{kNginx, "-p", home, "-c", home + "/conf", "-e", "stderr"});
  }
  bool runs() { return program_->wait_for_error_line("event method"); }

 private:
  std::unique_ptr<Program> program_;
};

// One file of number 5 and 700,000 bytes, at 127.0.0.33:8081.
std::string query_hit(const std::string& name) {
  return descriptor("d", 129, 1, 0,
                    std::string("\x01\x91\x1F\x7F\0\0\x21\x38\0\0\0\x05\0\0\0", 15) +
                        little_endian(700'000, 4) + name + std::string(2, '\0') +
                        std::string(16, 'g'));
}

TEST(PlainHttp, FetchesFromNginxAndResumesThere) {
  TemporaryFolder web, downloads;
  const std::string song = some_bytes();
  auto nginx = std::make_unique<Nginx>(web, "127.0.0.33:8081", "limit_rate 100k;");
  put(web.path() + "/www/get/5/a song.bin", song);
  ASSERT_TRUE(nginx->runs());
  const Resident resident("127.0.0.32", plain({"--set", "down_config=" + downloads.path()}));
  Line neighbour(6346, 0, "127.0.0.32");
  ASSERT_TRUE(neighbour.shake_hands() && neighbour.send(query_hit("a song.bin")));
  ASSERT_TRUE(wait_for_row(resident, "lfound", "a song"));
  ASSERT_EQ(resident.ask({"activate", "lfound", "1"}).status, 0);
  ASSERT_EQ(resident.ask({"press", "resume_down"}).status, 0);
  ASSERT_TRUE(wait_for_row(resident, "ldown", "Downloading"));
  nginx.reset();
  ASSERT_TRUE(wait_for_row(resident, "ldown", "Disconnected"));
  const auto there = fs::file_size(downloads.path() + "/a song.bin.download");
  EXPECT_GT(there, 0U);
  EXPECT_LT(there, song.size());

  fs::remove(web.path() + "/log");
  nginx = std::make_unique<Nginx>(web, "127.0.0.33:8081", "");
  ASSERT_TRUE(nginx->runs());
  const Outcome resumed = resident.ask({"resume"});
  EXPECT_EQ(resumed.status, 0) << resumed.errors;
  EXPECT_EQ(content(downloads.path() + "/a song.bin"), song);
  nginx.reset();
  const std::string log = content(web.path() + "/log");
  EXPECT_THAT(log, HasSubstr("\"GET /get/5/a song.bin HTTP:/1.0\" 400 "));
  EXPECT_THAT(log, HasSubstr("\"GET /get/5/a%20song.bin HTTP/1.1\" 206 " +
                             std::to_string(song.size() - there) + " "));
}

}  // namespace
}  // namespace velmora::process
