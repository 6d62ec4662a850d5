#include "form/form.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/doubles.h"

namespace velmora {
namespace {

// The names are what scripts, faces and the settings of users rely on.
TEST(Form, HasEveryControlUnderItsOwnNameOnce) {
  std::istringstream names(
      "frmMain pgbut StatusBar chkMsg mnuFile mnushow mnuexit net_stat bytein_stat "
      "byteout_stat drop_stat route_stat ping_stat myping_stat pong_stat mypong_stat "
      "search_stat reply_stat push_stat unknown_stat traffic_view lview lupload "
      "speed_upload pack_upload max_in_upload text_upload log_upload view_log_upload ldown "
      "resume_down pause_down delete_down upque_down downque_down clear_down max_down "
      "Tsearch start_search stop_search clear_search filtersearch search_num totalsearch "
      "lfound down_config download_browse_config query_config port_config upport_config "
      "speed_config speed_help ttlMax_config dns_ser cachemax_config forceIP_config "
      "upload_config upload_browse_config scan_config scan_progress sharenum_config "
      "sharesize_config cachefilter_config totalfilter_config form_b_sel form_f_sel "
      "but_b_sel list_b_sel list_f_sel color_help version ver_help s_debug mascot1 mascot2 "
      "mascot3 mascot_text lHosts new_host max_out_host max_in_host connect_auto "
      "connect_dns lcache more_cache remove_cache clear_cache help_hosts show_dns StartDNS "
      "stopDNS dnsStat dns_progress frmColor Red Green Blue preview ok frmDir frmDebug "
      "frmDebug.hide test frmUnknown frmUnknown.hide");
  Form form;
  for (std::string name; names >> name;) EXPECT_NE(form.find(name), nullptr) << name;
  EXPECT_EQ(form.find("port_confi"), nullptr);

  std::set<std::string> seen;
  form.for_each([&](Control& control) {
    EXPECT_TRUE(seen.insert(control.name()).second) << control.name();
    EXPECT_EQ(form.find(control.name()), &control);
  });
  EXPECT_EQ(form.find("port_config"), &form.port_config);
  EXPECT_EQ(form.find("StatusBar"), &form.StatusBar);
}

TEST(Form, TellsItsWatchersOfRealChangesOnly) {
  Form form;
  std::vector<std::string> told;
  const int id = form.watch([&](Control& control) { told.push_back(control.name()); });

  form.port_config.set_text("6346");  // as it is
  form.connect_auto.set_enabled(true);
  form.speed_upload.set_position(500);
  form.show_dns.set_checked(false);
  EXPECT_TRUE(told.empty());

  form.port_config.set_text("1");
  form.connect_auto.set_enabled(false);
  form.speed_upload.set_position(501);
  form.show_dns.click();
  form.StatusBar.set_panel(2, "x");
  form.upload_config.add("/a");
  form.lcache.redraw();
  EXPECT_EQ(told, (std::vector<std::string>{"port_config", "connect_auto", "speed_upload",
                                            "show_dns", "StatusBar", "upload_config", "lcache"}));
  form.unwatch(id);
  form.port_config.set_text("2");
  EXPECT_EQ(told.size(), 7U);
}

TEST(Form, AWatcherMayUnwatchItselfAndOthersWhileItIsTold) {
  Form form;
  int first_told = 0;
  int second_told = 0;
  int third_told = 0;
  int first = 0;
  int second = 0;
  first = form.watch([&](Control&) {
    ++first_told;
    form.unwatch(first);
    form.unwatch(second);
    form.watch([&](Control&) { ++third_told; });
  });
  second = form.watch([&](Control&) { ++second_told; });
  form.Tsearch.set_text("a");
  form.Tsearch.set_text("b");
  EXPECT_EQ(first_told, 1);
  EXPECT_EQ(second_told, 0);
  EXPECT_EQ(third_told, 1);
}

TEST(Form, WhatAPersonDoesRunsTheHandlersUnlessTheControlIsNotEnabled) {
  Form form;
  int runs = 0;
  const auto count = [&] { ++runs; };
  form.connect_auto.on_click = count;
  form.new_host.on_enter = count;
  form.stop_search.on_change = count;
  form.unknown_stat.on_click = count;
  form.cachefilter_config.on_enter = count;
  const auto do_all = [&] {
    form.connect_auto.click();
    form.new_host.enter("1.2.3.4");
    form.stop_search.click();
    form.unknown_stat.click();
    form.cachefilter_config.enter("10.");
  };
  do_all();
  EXPECT_EQ(runs, 5);
  EXPECT_EQ(form.new_host.text(), "1.2.3.4");
  form.for_each([](Control& control) { control.set_enabled(false); });
  do_all();
  EXPECT_EQ(runs, 5);

  form.mascot1.on_move = count;
  form.mascot2.on_move = count;
  form.mascot1.move_over();
  form.mascot2.move_over();  // hidden by design
  EXPECT_EQ(runs, 6);
}

TEST(Form, SlidersKeepTheirRangeAndOptionsTheirs) {
  Form form;
  form.pack_upload.set_position(0);
  EXPECT_EQ(form.pack_upload.position(), 1);
  form.pack_upload.set_position(2000000000);
  EXPECT_EQ(form.pack_upload.position(), 1048576);

  form.search_num.choose(3);
  EXPECT_EQ(form.search_num.chosen(), 3);
  EXPECT_EQ(code_of([&] { form.search_num.choose(4); }), Errc::subscript_out_of_range);
  EXPECT_EQ(code_of([&] { form.search_num.choose(0); }), Errc::subscript_out_of_range);
  form.pgbut.choose(0);
  EXPECT_EQ(code_of([&] { form.pgbut.choose(7); }), Errc::subscript_out_of_range);
  EXPECT_EQ(form.search_num.chosen(), 3);
  EXPECT_EQ(code_of([&] { form.StatusBar.set_panel(4, ""); }), Errc::subscript_out_of_range);
}

TEST(Form, ComboListOffersTheRowThatIsDeleted) {
  Form form;
  ComboList& list = form.upload_config;
  list.on_delete = [&](std::size_t row) { list.remove_item(row); };
  for (const char* item : {"/a", "/b", "/c"}) list.add(item);
  list.press_delete(2);
  EXPECT_EQ(list.items(), (std::vector<std::string>{"/a", "/c"}));
  EXPECT_EQ(code_of([&] { list.press_delete(3); }), Errc::subscript_out_of_range);
  EXPECT_EQ(code_of([&] { list.press_delete(0); }), Errc::subscript_out_of_range);
}

struct Rows : ListSource {
  std::vector<std::string> names;
  [[nodiscard]] std::size_t rows() const override { return names.size(); }
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override {
    return names.at(row - 1) + std::to_string(column);
  }
  [[nodiscard]] std::string row_key(std::size_t row) const override { return names.at(row - 1); }
};

TEST(Form, ListViewMovesItsRowsOnlyByRedraw) {
  Form form;
  Rows source;
  ListView& list = form.lcache;
  list.set_source(&source);
  source.names = {"a", "b", "c"};
  EXPECT_EQ(list.rows(), 0U);
  list.redraw(2);
  EXPECT_EQ(list.rows(), 2U);
  EXPECT_EQ(list.cell(2, 6), "b6");
  EXPECT_EQ(code_of([&] { (void)list.cell(3, 1); }), Errc::subscript_out_of_range);
  EXPECT_EQ(code_of([&] { (void)list.cell(1, 7); }), Errc::subscript_out_of_range);

  std::size_t activated = 0;
  list.on_activate = [&](std::size_t row) { activated = row; };
  list.activate(2);
  EXPECT_EQ(activated, 2U);
  EXPECT_EQ(list.selected(), 2U);
  EXPECT_EQ(code_of([&] { list.activate(3); }), Errc::subscript_out_of_range);

  source.names = {"b", "a", "c"};
  EXPECT_EQ(list.selected(), 1U) << "the selection is of the entry";
  source.names = {"a", "c", "b"};
  list.redraw(2);
  EXPECT_EQ(list.selected(), 0U) << "it is shown no more";
  list.select(1);
  source.names = {"z"};
  EXPECT_EQ(list.cell(1, 1), "z1");
  EXPECT_EQ(list.cell(2, 1), "");  // shown still, but gone from the array
  list.redraw();
  EXPECT_EQ(list.rows(), 1U);
  EXPECT_EQ(list.selected(), 0U);
}

}  // namespace
}  // namespace velmora
