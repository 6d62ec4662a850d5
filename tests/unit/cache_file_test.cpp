#include "net/cache_file.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/sim/sim_files.h"
#include "platform/sim/sim_world.h"
#include "support/doubles.h"

namespace velmora {
namespace {

constexpr const char* kFormat =
    "\"Format: Row #, IP, Port, DNS, Files, Size, Date Ponged, Date DNS\"\r\n";

std::string head(const std::string& rows) {
  return "\"Rows in this file:\"," + rows + "\r\n" + kFormat;
}

struct CacheFile : testing::Test {
  // Loads the text into an empty cache.
  std::string load(const std::string& text) {
    files.put("cache", text);
    cache.clear();
    return load_cache(files, "cache", cache);
  }
  std::string saved() {
    EXPECT_EQ(save_cache(files, "cache", cache), "");
    return files.content("cache");
  }

  sim::SimWorld world;
  sim::SimFiles files;
  FilterArray filter;
  Lines log;
  HostCache cache{world.add_host("10.0.0.1").platform().loop, filter, log};
};

TEST_F(CacheFile, IsWrittenByteForByte) {
  EXPECT_EQ(saved(), head("0"));
  CacheHost first;
  first.address = "1.2.3.4";
  first.port = 6346;
  first.files = 12;
  first.size = 4294967295.0F;
  first.date_ponged = {2000, 6, 30, 14, 5, 0};
  CacheHost second;
  second.address = "5.6.7.8";
  second.port = -15536;  // 50000
  second.host_name = "say \"hi\",\r\n";
  second.files = -3;
  second.size = 0.5F;
  second.date_ponged = {2026, 1, 2, 3, 4, 59};
  second.date_dns = {1999, 12, 31, 0, 0, 0};
  cache.replace({first, second});
  EXPECT_EQ(saved(), head("2") +
                         "1,\"1.2.3.4\",6346,\"?\",12,4294967296,#2000-06-30 14:05:00#,"
                         "#1899-12-30 00:00:00#\r\n"
                         "2,\"5.6.7.8\",-15536,\"say \"\"hi\"\",\r\n\",-3,0.5,"
                         "#2026-01-02 03:04:59#,#1999-12-31 00:00:00#\r\n");
}

TEST_F(CacheFile, ComesBackAsItWasSaved) {
  std::string every_byte;
  for (int byte = 0; byte < 256; ++byte) every_byte += static_cast<char>(byte);
  std::vector<CacheHost> hosts(3);
  hosts[0].address = hosts[2].address = "1.2.3.4";  // equal rows stay as they are
  hosts[0].host_name = every_byte;
  hosts[1].address = std::string(100'000, '"');
  hosts[1].port = -1;
  hosts[1].files = 32767;
  hosts[1].size = 3.25e30F;
  hosts[2].date_dns = {2024, 2, 29, 23, 59, 59};
  cache.replace(hosts);
  const std::string text = saved();
  EXPECT_EQ(load(text), "");
  EXPECT_EQ(cache.row(1).host_name, every_byte);
  EXPECT_EQ(cache.row(2).size, 3.25e30F);
  EXPECT_EQ(saved(), text);
}

struct Hostile {
  const char* what;
  std::string text;
  std::string error;
  std::size_t rows_left;
};

TEST_F(CacheFile, ReportsWhatIsWrongAndKeepsTheRowsReadByThen) {
  const std::string dates = ",#2000-06-30 14:05:00#,#2000-06-30 14:05:00#\r\n";
  const std::string row = "7,\"1.2.3.4\",6346,\"\",1,2" + dates;
  const auto second = [&](const std::string& line) { return head("2") + row + line; };
  const auto dated = [&](const std::string& date) {
    return second("2,\"a\",1,\"n\",1,2," + date + ",#2000-06-30 14:05:00#\r\n");
  };
  std::string many;
  for (std::size_t i = 0; i <= kMaxCacheHosts; ++i) many += row;
  const std::string past_end = "Input past end of file";
  const std::string mismatch = "Type mismatch";
  const Hostile cases[] = {
      {"empty", "", past_end, 0},
      {"text", "Dear diary,\r\n", mismatch, 0},
      {"zeros", std::string(5000, '\0'), mismatch, 0},
      {"a quote that never ends", '"' + std::string(5000, 'x'), past_end, 0},
      {"rows missing", head("2") + row, past_end, 1},
      {"rows claimed, none there", head("2147483647"), past_end, 0},
      {"far more claimed than there", head("1000000000") + row + row, past_end, 2},
      {"beyond 32 bits", head("99999999999") + row, "Overflow", 0},
      {"beyond every number", head("1e999") + row, "Overflow", 0},
      {"negative", head("-1") + row, "Subscript out of range", 0},
      {"no number", head("many") + row, mismatch, 0},
      {"more than it may hold", head("10001") + many, "Out of memory", kMaxCacheHosts},
      {"cut in a name", second("2,\"b"), past_end, 1},
      {"cut behind a comma", second("2,\"b\","), past_end, 1},
      {"cut in a date", second("2,\"b\",1,\"n\",1,2,#2000-06"), past_end, 1},
      {"short row", second("2,\"b\",1\r\n"), mismatch, 1},
      {"long row", second("2,\"b\",1,\"n\",1,2,#2000-06-30#,#2000-06-30#,9\r\n"), mismatch, 1},
      {"address without quotes", second("2,1.2.3.4,1,\"n\",1,2" + dates), mismatch, 1},
      {"port is no number", second("2,\"b\",x,\"n\",1,2" + dates), mismatch, 1},
      {"files beyond 16 bits", second("2,\"b\",1,\"n\",32768,2" + dates), "Overflow", 1},
      {"size beyond single precision", second("2,\"b\",1,\"n\",1,1e39" + dates), "Overflow", 1},
      {"no date", dated("2000"), mismatch, 1},
      {"month 13", dated("#2000-13-01 00:00:00#"), mismatch, 1},
      {"February 30", dated("#2000-02-30 00:00:00#"), mismatch, 1},
      {"hour 24", dated("#2000-02-28 24:00:00#"), mismatch, 1},
      {"letters in a date", dated("#2000-O2-28 00:00:00#"), mismatch, 1},
  };
  for (const Hostile& hostile : cases) {
    SCOPED_TRACE(hostile.what);
    EXPECT_EQ(load(hostile.text), "load_cache: " + hostile.error);
    EXPECT_EQ(cache.rows(), hostile.rows_left);
  }
}

TEST_F(CacheFile, AcceptsWhatOthersWrite) {
  EXPECT_EQ(
      load("\"Rows\",1\n\"F\"\r9,\"1.2.3.4\",50000,\"\",1,2e3,#2000-06-30#,#2000-06-30#\nmore"),
      "");
  EXPECT_EQ(saved(), head("1") +
                         "1,\"1.2.3.4\",-15536,\"?\",1,2000,#2000-06-30 00:00:00#,"
                         "#2000-06-30 00:00:00#\r\n");
}

TEST_F(CacheFile, ReportsTheDisksErrorsAndLeavesTheCacheAlone) {
  cache.replace(std::vector<CacheHost>(1));
  EXPECT_EQ(load_cache(files, "cache", cache), "load_cache: No such file or directory");
  files.put("cache", std::string(kMaxCacheFile + 1, 'x'));
  EXPECT_EQ(load_cache(files, "cache", cache), "load_cache: Out of memory");
  EXPECT_EQ(cache.rows(), 1U);
  files.put("cache", "old");
  files.set_capacity(20);
  EXPECT_EQ(save_cache(files, "cache", cache), "save_cache: No space left on device");
  EXPECT_EQ(files.content("cache"), "old");
}

}  // namespace
}  // namespace velmora
