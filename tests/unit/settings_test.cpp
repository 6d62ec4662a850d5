#include "app/settings.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/sim/sim_files.h"
#include "support/doubles.h"

namespace velmora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A profile in memory; every start is a new program on it.
class Settings : public testing::Test {
 protected:
  // Starts anew: a new form, filled from what the last one saved.
  void start() {
    form_ = std::make_unique<Form>();
    store_ = std::make_unique<SettingsStore>(files_);
    load_text_ = store_->load();
    load_settings(*form_, *store_, filter_);
  }
  void start_with(const std::string& toml) {
    files_.put(SettingsStore::kFile, toml);
    start();
  }
  void save() { Save_settings(*form_, *store_, log_); }
  Form& form() { return *form_; }
  template <class Kind>
  Kind& control(const std::string& name) {
    return dynamic_cast<Kind&>(*form_->find(name));
  }

  sim::SimFiles files_;
  Lines log_;
  FilterArray filter_;
  std::string load_text_;
  std::unique_ptr<SettingsStore> store_;

 private:
  std::unique_ptr<Form> form_;
};

TEST(SettingsStore, KeepsEveryByteString) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  const std::vector<std::string> values = {
      "",
      "plain text",
      "C:\\music\\\"new\"",
      "two\r\nlines\ttab",
      std::string("nul\0in", 6),
      "caf\xC3\xA9 \xF0\x9F\x8E\xB5",
      "latin caf\xE9",
      "\xE2\x90\x9B",                          // the mark itself
      std::string("\xE2\x90\x9B") + "41",      // what an escape looks like
      "\xE2\x90",                              // the mark cut short
      "\xED\xA0\x80\xC0\x80\xF4\x90\x80\x80",  // surrogate, overlong, beyond the last character
      "\xEF\xBB\xBF\xEF\xBF\xBE\x7F\x1B[31m",
      all,
  };
  sim::SimFiles files;
  SettingsStore first(files);
  for (std::size_t i = 0; i < values.size(); ++i) {
    first.write("config", fmt::format("key{}", i), values[i]);
    first.write(values[i], "x", "y");
    first.write("keys", values[i], "z");
  }
  first.save();
  SettingsStore second(files);
  ASSERT_EQ(second.load(), "");
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(second.read("config", fmt::format("key{}", i), "missing"), values[i]) << i;
    EXPECT_EQ(second.read(values[i], "x", "missing"), "y") << i;
    EXPECT_EQ(second.read("keys", values[i], "missing"), "z") << i;
  }
  const std::string file = files.content(SettingsStore::kFile);
  EXPECT_THAT(file, HasSubstr("\"plain text\""));
  EXPECT_THAT(file, HasSubstr("\"caf\xC3\xA9 \xF0\x9F\x8E\xB5\""));
}

TEST(SettingsStore, ReadsWhatAPersonWrote) {
  sim::SimFiles files;
  files.put(SettingsStore::kFile,
            "# mine\nbare = 1\n[config]\nlistenport = 7000\nform_b_color = -2147483633\n"
            "downpath = '/home/me'\nquerylimit = 1.5\ntools = [1, 2]\n[hosts]\nshowdns = true\n"
            "a.b = 'deep'\nother = false\n");
  SettingsStore store(files);
  ASSERT_EQ(store.load(), "");
  EXPECT_EQ(store.read("config", "listenport", ""), "7000");
  EXPECT_EQ(store.read("config", "form_b_color", ""), "-2147483633");
  EXPECT_EQ(store.read("config", "downpath", ""), "/home/me");
  EXPECT_EQ(store.read("config", "querylimit", ""), "1.5");
  EXPECT_EQ(store.read("config", "tools", "none"), "none");
  EXPECT_EQ(store.read("hosts", "showdns", ""), "1");
  EXPECT_EQ(store.read("hosts", "other", ""), "0");
}

TEST(SettingsStore, KeepsAFileThatItCannotUse) {
  for (const std::string& bad : {std::string("[config\nx = 1"), std::string("x = \"\xFF\""),
                                 std::string("x = ") + std::string(100000, '[')}) {
    sim::SimFiles files;
    files.put(SettingsStore::kFile, bad);
    SettingsStore store(files);
    EXPECT_THAT(store.load(), HasSubstr("settings.toml.bad"));
    EXPECT_EQ(store.read("config", "x", "default"), "default");
    EXPECT_EQ(files.content("settings.toml.bad"), bad);
    store.save();
    EXPECT_EQ(store.load(), "");
  }
}

TEST(SettingsStore, NeverReplacesAFileThatItCouldNeitherReadNorKeep) {
  sim::SimFiles files;
  files.put(SettingsStore::kFile, "[config]\nlistenport = 7000\n");
  SettingsStore store(files);
  files.fail_next(1, EACCES);
  EXPECT_THAT(store.load(), HasSubstr("Permission denied"));
  EXPECT_THROW(store.save(), PlatformError);
  EXPECT_EQ(store.load(), "");
  EXPECT_EQ(store.read("config", "listenport", ""), "7000");
  store.save();

  const std::string huge(SettingsStore::kMostBytes + 1, '#');
  files.put(SettingsStore::kFile, huge);
  EXPECT_THAT(store.load(), HasSubstr("Out of memory"));
  EXPECT_THROW(store.save(), PlatformError);
  EXPECT_EQ(files.content(SettingsStore::kFile).size(), huge.size());
}

TEST(SettingsStore, SavesNoFileThatItCouldNotLoad) {
  sim::SimFiles files;
  SettingsStore store(files);
  store.write("a", "b", std::string(SettingsStore::kMostBytes, 'x'));
  EXPECT_THROW(store.save(), PlatformError);
  EXPECT_FALSE(files.exists(SettingsStore::kFile));
}

TEST_F(Settings, FirstStartKeepsPrivateAddressesOut) {
  start();
  EXPECT_EQ(load_text_, "");
  ASSERT_EQ(form().cachefilter_config.items().size(), 18U);
  EXPECT_EQ(form().cachefilter_config.items()[0], "10.");
  EXPECT_EQ(form().cachefilter_config.items()[1], "172.16.");
  EXPECT_EQ(form().cachefilter_config.items()[16], "172.31.");
  EXPECT_EQ(form().cachefilter_config.items()[17], "192.168.");
  EXPECT_EQ(form().totalfilter_config.text(), "18");
  ASSERT_EQ(filter_.upper_bound(), 18U);
  EXPECT_EQ(filter_.at(18), "192.168.");
}

TEST_F(Settings, EveryChangeComesBack) {
  const std::vector<std::string> fields = {
      "down_config",   "query_config", "port_config",     "upport_config",  "speed_config",
      "ttlMax_config", "dns_ser",      "cachemax_config", "forceIP_config", "max_in_upload",
      "text_upload",   "max_down",     "new_host",        "max_out_host",   "max_in_host"};
  const std::vector<std::string> boxes = {"log_upload", "clear_down", "show_dns", "traffic_view"};
  const std::vector<std::string> buttons = {"form_b_sel", "form_f_sel", "but_b_sel", "list_b_sel",
                                            "list_f_sel"};
  start();
  for (const auto& name : fields) control<TextField>(name).set_text("new " + name + "\r\n\xFF");
  for (const auto& name : boxes) control<CheckBox>(name).click();
  std::int32_t colour = -2;
  for (const auto& name : buttons) control<Button>(name).set_back_colour(colour++);
  form().speed_upload.set_position(0);
  form().pack_upload.set_position(1048576);
  form().upload_config.add("/music/caf\xE9");
  save();
  EXPECT_TRUE(log_.lines.empty());

  start();
  for (const auto& name : fields) {
    EXPECT_EQ(control<TextField>(name).text(), "new " + name + "\r\n\xFF");
  }
  for (const auto& name : boxes) {
    EXPECT_EQ(control<CheckBox>(name).checked(), name != "traffic_view") << name;
  }
  colour = -2;
  for (const auto& name : buttons) EXPECT_EQ(control<Button>(name).back_colour(), colour++);
  EXPECT_EQ(form().speed_upload.position(), 0);
  EXPECT_EQ(form().pack_upload.position(), 1048576);
  EXPECT_THAT(form().upload_config.items(), ElementsAre("/music/caf\xE9"));
}

TEST_F(Settings, ListsLoadUpToTheFirstGapAndNoMoreThan100) {
  start_with("[config2]\nuppath1 = '/a'\nuppath2 = '/b'\nuppath4 = '/d'\ncachefilter1 = '99.'\n");
  EXPECT_THAT(form().upload_config.items(), ElementsAre("/a", "/b"));
  EXPECT_THAT(form().cachefilter_config.items(), ElementsAre("99."));  // no seeding
  EXPECT_EQ(form().totalfilter_config.text(), "1");
  EXPECT_EQ(filter_.upper_bound(), 1U);

  form().upload_config.clear();
  for (int i = 1; i <= 150; ++i) form().upload_config.add(fmt::format("/{}", i));
  save();
  EXPECT_EQ(store_->read("config2", "uppath150", ""), "/150");
  start();
  ASSERT_EQ(form().upload_config.items().size(), 100U);
  EXPECT_EQ(form().upload_config.items()[99], "/100");

  form().upload_config.clear();
  form().upload_config.add("/only");
  form().cachefilter_config.clear();
  save();
  EXPECT_EQ(store_->read("config2", "uppath2", "none"), "none");
  start();
  EXPECT_THAT(form().upload_config.items(), ElementsAre("/only"));
  EXPECT_EQ(form().cachefilter_config.items().size(), 18U);  // saved empty: seeded again
}

TEST_F(Settings, NumbersAreConvertedAsTheyAreLoaded) {
  start_with("[upload]\nspeed = '5000'\npacket = '-3'\nlog = '-1'\n[download]\nautoclear = true\n");
  EXPECT_EQ(form().speed_upload.position(), 2000);
  EXPECT_EQ(form().pack_upload.position(), 1);
  EXPECT_TRUE(form().log_upload.checked());
  EXPECT_TRUE(form().clear_down.checked());
}

TEST_F(Settings, ATextThatIsNoNumberEndsTheLoadingThere) {
  const std::vector<std::pair<std::string, Errc>> rows = {
      {"speed = ''", Errc::type_mismatch},      {"speed = 'fast'", Errc::type_mismatch},
      {"speed = '2147483648'", Errc::overflow}, {"packet = '1e300'", Errc::overflow},
      {"log = '40000'", Errc::overflow},
  };
  for (const auto& [line, code] : rows) {
    try {
      start_with("[config]\nlistenport = '1'\n[upload]\n" + line + "\nmax_in = '77'\n");
      ADD_FAILURE() << line;
    } catch (const PlatformError& error) {
      EXPECT_EQ(error.code(), code) << line;
    }
    EXPECT_EQ(form().port_config.text(), "1");
    EXPECT_EQ(form().max_in_upload.text(), "4");
    EXPECT_EQ(filter_.upper_bound(), 18U);
  }
}

TEST_F(Settings, AFailedSaveIsLoggedAndTheOldFileStays) {
  start();
  form().port_config.set_text("1111");
  save();
  form().port_config.set_text("2222");
  files_.fail_next(1, ENOSPC);
  save();
  EXPECT_THAT(log_.lines, ElementsAre("Save_settings: No space left on device"));
  start();
  EXPECT_EQ(form().port_config.text(), "1111");
}

}  // namespace
}  // namespace velmora
