#include <gtest/gtest.h>

#include "cli/progress.h"
#include "cli/watch_frame.h"

namespace velmora::cli {
namespace {

TEST(CliProgress, ReadsAStatusLeniently) {
  const struct {
    std::string status;
    Phase phase;
    std::optional<double> percent;
  } cases[] = {
      {"Queued", Phase::waiting, std::nullopt},
      {"Requesting to Connect", Phase::waiting, std::nullopt},
      {"Connected", Phase::waiting, std::nullopt},
      {"Asked to push (2 sources)", Phase::waiting, std::nullopt},
      {"Downloading", Phase::running, std::nullopt},
      {"Downloading 45 % (1,415,577)", Phase::running, 45.0},
      {"Downloading 45.5%", Phase::running, 45.5},
      {"Downloading 7,25 %", Phase::running, 7.25},
      {"Downloading (500)", Phase::running, 25.0},
      {"Downloading 400 %", Phase::running, 100.0},
      {"Downloading %", Phase::running, std::nullopt},
      {"Done", Phase::done, std::nullopt},
      {"Not accepted", Phase::ended, std::nullopt},
      {"No HTTP OK!", Phase::ended, std::nullopt},
      {"Disconnected", Phase::ended, std::nullopt},
      {"Stopped", Phase::ended, std::nullopt},
      {"No Data, Disconnecting", Phase::ended, std::nullopt},
      {"Disk full at 90 %", Phase::ended, std::nullopt},
      {"", Phase::ended, std::nullopt},
  };
  for (const auto& c : cases) {
    const DownloadStatus read = read_download_status(c.status, 2000);
    EXPECT_EQ(read.phase, c.phase) << c.status;
    EXPECT_EQ(read.percent, c.percent) << c.status;
  }
  EXPECT_EQ(read_count("1,415,577"), 1415577U);
  EXPECT_EQ(read_count("--"), 0U);
  EXPECT_EQ(read_count("99999999999999999999999"), 9999999999999999999U);
}

TEST(CliProgress, IsNewsByItsWordsOrByTheTenth) {
  const std::pair<const char*, bool> looks[] = {
      {"Queued", true},
      {"Queued", false},
      {"Requesting to Connect", true},
      {"Downloading 0 % (1,000)", true},
      {"Downloading 9 % (9,999)", false},
      {"Downloading 10 % (10,000)", true},
      {"Downloading 55 % (55,000)", true},
      {"Downloading 58 % (58,000)", false},
      {"Disconnected, 2 sources, again in 2 min", true},
      {"Disconnected, 2 sources, again in 1 min", false},
      {"Downloading 58 % (58,000)", true},
      {"Downloading 100 % (100,000)", true},
      {"Done", true},
      {"Done", false},
  };
  ToldStatus told;
  for (const auto& [status, news] : looks) EXPECT_EQ(told.is_news(status, 100'000), news) << status;
}

TEST(CliProgress, ShowsCountsAndLines) {
  EXPECT_EQ(shown_count(1234567), "1,234,567");
  EXPECT_EQ(shown_count(123), "123");
  EXPECT_EQ(progress_line("a.mp3", "Downloading 50 %", 2048, 1024, 70),
            "a.mp3             [########--------]  50 %  1.0 KiB/s  0:01 left");
  EXPECT_EQ(progress_line("a.mp3", "Downloading 50 %", 2048, 0, 26), "[########--------]  50 %");
  EXPECT_EQ(progress_line("\x1b.mp3", "No HTTP OK!", 2048, 0, 24), "\\x1B.mp3     No HTTP OK!");
  EXPECT_EQ(progress_line("a very long name of a file.mp3", "Done", 2048, 0, 80),
            "a very long name of a fil…  [################] 100 %  Done");
}

TEST(CliWatchFrame, KeepsWithinTheScreenAndSharesIt) {
  WatchState state;
  state.title = "title";
  state.status = "status";
  state.sections = {{"Connections (1 in, 2 out)", {"h1", "h2", "h3", "h4", "h5"}},
                    {"Downloads (1)", {"d1"}},
                    {"Uploads (0)", {}}};
  state.counters = {{"net", "12"}, {"ping", "1 / 2"}};
  const auto frame = [&](std::size_t height) {
    std::string text;
    for (const std::string& line : watch_frame(state, 80, height)) text += line + "\n";
    return text;
  };
  const std::string top = "title\nstatus\n\nConnections (1 in, 2 out)\nh1\nh2\n";
  const std::string all = "h3\nh4\nh5\n";
  const std::string cut = "... 3 more\n";
  const std::string rest = "\nDownloads (1)\nd1\n\nUploads (0)\n";
  const std::string counters = "\nCounters\nnet 12       ping 1 / 2\n";
  EXPECT_EQ(frame(0), top + all + rest + counters);
  EXPECT_EQ(frame(24), top + all + rest + counters);
  EXPECT_EQ(frame(15), top + cut + rest + counters);
  EXPECT_EQ(frame(12), top + cut + rest);
  for (std::size_t height = 1; height < 20; ++height) {
    EXPECT_LE(watch_frame(state, 10, height).size(), height);
  }
}

}  // namespace
}  // namespace velmora::cli
