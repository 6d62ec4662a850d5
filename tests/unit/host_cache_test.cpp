#include "net/host_cache.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/sim/sim_world.h"
#include "support/doubles.h"

namespace velmora {
namespace {

std::string shown(const CacheHost& host) {
  const auto date = [](const LocalTime& t) {
    return fmt::format("{}-{}-{} {}:{}:{}", t.year, t.month, t.day, t.hour, t.minute, t.second);
  };
  return fmt::format("{}:{} {} {} {} {} {} {} {} {}", host.address, host.port, host.host_name,
                     host.files, host.size, host.hops, host.ttl, host.connection,
                     date(host.date_dns), date(host.date_ponged));
}

Pong pong_from(std::string address, float files = 1) {
  Pong pong;
  pong.address = std::move(address);
  pong.port = 6346;
  pong.files = files;
  pong.kilobytes = 2 * files;
  return pong;
}

struct HostCacheTest : testing::Test {
  void pong(const std::string& address, float files = 1) {
    cache.set_cache_stat({}, pong_from(address, files), 1);
  }
  std::vector<std::string> addresses() const {
    std::vector<std::string> all;
    for (std::size_t row = 1; row <= cache.rows(); ++row) all.push_back(cache.row(row).address);
    return all;
  }

  sim::SimWorld world;
  EventLoop& loop = world.add_host("10.0.0.1").platform().loop;
  FilterArray filter;
  Lines log;
  HostCache cache{loop, filter, log};
};

using Addresses = std::vector<std::string>;

TEST_F(HostCacheTest, StaysAsItWasWhenANumberDoesNotFit) {
  for (const char* address : {"a", "b"}) pong(address);
  int changes = 0;
  cache.on_change = [&] { ++changes; };
  pong("a", 32768);
  pong("new", 4294967295.0F);
  cache.set_cache_stat({}, pong_from("a"), 32768);
  EXPECT_EQ(log.lines, Addresses(3, "Error: set_cache_stat: Overflow"));
  EXPECT_EQ(addresses(), (Addresses{"b", "a"}));
  EXPECT_EQ(changes, 0);
  pong("a");
  EXPECT_EQ(changes, 1);
}

TEST_F(HostCacheTest, KeepsOutWhatBeginsWithAnEntryOfTheFilter) {
  pong("192.168.0.1");
  filter.resize(3);
  filter.at(1) = "192.168.";
  filter.at(2) = "10.0.0.1";
  filter.at(3) = "7.";
  const Addresses all = {"192.168.0.1", "192.168.0.5", "192.16.0.5", "10.0.0.1",
                         "10.0.0.12",   "10.0.0.2",    "17.0.0.1",   "7.0.0.1"};
  for (const std::string& address : all) pong(address);
  EXPECT_EQ(addresses(), (Addresses{"17.0.0.1", "10.0.0.2", "192.16.0.5", "192.168.0.1"}))
      << "what is there stays";
  filter.resize(0);
  pong("192.168.0.1", 5);
  EXPECT_EQ(cache.row(1).files, 5);
}

TEST_F(HostCacheTest, ChecksItsRows) {
  pong("a");
  for (const std::size_t row : {std::size_t{0}, std::size_t{2}, std::size_t{0} - 1}) {
    EXPECT_THROW((void)cache.row(row), PlatformError);
    EXPECT_THROW(cache.set_host_name(row, "x"), PlatformError);
    EXPECT_THROW(cache.set_date_dns(row, {}), PlatformError);
    EXPECT_THROW(cache.remove(row), PlatformError);
  }
  EXPECT_EQ(cache.find("b"), 0U);
  EXPECT_THROW(cache.replace(std::vector<CacheHost>(kMaxCacheHosts + 1)), PlatformError);
  EXPECT_EQ(addresses(), Addresses{"a"});
  cache.clear();
  EXPECT_EQ(cache.rows(), 0U);
  EXPECT_EQ(cache.find("a"), 0U);
}

// The same cache done the obvious way: an array in which rows move. Hosts are held by number and
// found by the number of their address, so that moving ten thousand of them stays quick.
class NaiveCache {
 public:
  explicit NaiveCache(std::vector<std::uint32_t> keys, std::vector<CacheHost> rows)
      : keys_(std::move(keys)), hosts_(std::move(rows)) {
    for (std::uint32_t i = 0; i < hosts_.size(); ++i) rows_.push_back(i);
  }

  void pong(std::uint32_t key, CacheHost fresh) {
    const std::size_t row = find(key);
    if (row == 0) {
      keys_.insert(keys_.begin(), key);
      rows_.insert(rows_.begin(), static_cast<std::uint32_t>(hosts_.size()));
    } else {
      fresh.host_name = at(row).host_name;
      fresh.date_dns = at(row).date_dns;
      remove(row);
      keys_.insert(keys_.begin(), key);
      rows_.insert(rows_.begin(), static_cast<std::uint32_t>(hosts_.size()));
    }
    hosts_.push_back(std::move(fresh));
    if (rows_.size() > 10000) remove(rows_.size());
  }
  void remove(std::size_t row) {
    keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(row - 1));
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(row - 1));
  }
  [[nodiscard]] std::size_t find(std::uint32_t key) const {
    const auto found = std::find(keys_.begin(), keys_.end(), key);
    return found == keys_.end() ? 0 : static_cast<std::size_t>(found - keys_.begin()) + 1;
  }
  CacheHost& at(std::size_t row) { return hosts_[rows_[row - 1]]; }
  [[nodiscard]] std::size_t rows() const { return rows_.size(); }

 private:
  std::vector<std::uint32_t> keys_;
  std::vector<std::uint32_t> rows_;
  std::vector<CacheHost> hosts_;
};

struct ModelCase {
  std::size_t rows;         // loaded at the start
  std::uint32_t addresses;  // that there are
  int pongs;
};

class HostCacheModel : public HostCacheTest, public testing::WithParamInterface<ModelCase> {};

TEST_P(HostCacheModel, HoldsTheRowsThatANaiveOneHolds) {
  const ModelCase& c = GetParam();
  constexpr std::uint32_t kSeed = 20;
  std::mt19937 random(kSeed);
  const auto below = [&](std::size_t most) { return static_cast<std::uint32_t>(random() % most); };
  const auto address_of = [](std::uint32_t key) {
    return fmt::format("{}.{}.{}.9", key % 7, key / 7 % 251, key / (7 * 251));
  };
  std::vector<std::uint32_t> keys;
  std::vector<CacheHost> loaded;
  for (std::size_t row = 1; row <= c.rows; ++row) {
    keys.push_back(below(c.addresses / 2));  // an address often stands twice
    CacheHost host;
    host.address = address_of(keys.back());
    host.host_name = fmt::format("loaded{}", row);
    loaded.push_back(host);
  }
  NaiveCache model(keys, loaded);
  cache.replace(loaded);

  for (int i = 1; i <= c.pongs; ++i) {
    const std::uint32_t key = below(below(3) == 0 ? c.addresses / 10 : c.addresses);
    CacheHost fresh;
    fresh.address = address_of(key);
    fresh.port = 6346;
    fresh.files = static_cast<std::int16_t>(below(32768));
    fresh.size = 2 * static_cast<float>(fresh.files);
    fresh.connection = 1;
    fresh.date_ponged = loop.local_time();
    model.pong(key, fresh);
    pong(fresh.address, fresh.files);
    if (i % 16 == 0) {
      const std::size_t row = below(model.rows()) + 1U;
      cache.set_host_name(row, fmt::format("named{}", i));
      model.at(row).host_name = fmt::format("named{}", i);
      const std::size_t seen = below(model.rows()) + 1U;
      ASSERT_EQ(shown(cache.row(seen)), shown(model.at(seen))) << "pong " << i;
      const std::uint32_t asked = below(c.addresses);
      ASSERT_EQ(cache.find(address_of(asked)), model.find(asked)) << "pong " << i;
    }
    if (i % 64 == 0) {
      const std::size_t row = below(model.rows()) + 1U;
      cache.remove(row);
      model.remove(row);
    }
    if (i % 5000 == 0) {
      world.set_local_time({2000, 6, 30, 14, 5, i / 5000 % 60});
      ASSERT_EQ(cache.rows(), model.rows());
      for (std::size_t row = 1; row <= model.rows(); ++row) {
        ASSERT_EQ(shown(cache.row(row)), shown(model.at(row))) << "pong " << i << ", row " << row;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, HostCacheModel,
                         testing::Values(ModelCase{10000, 13000, 100'000}, ModelCase{5, 20, 20'000},
                                         ModelCase{0, 400, 20'000}));

}  // namespace
}  // namespace velmora
