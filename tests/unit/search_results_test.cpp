#include "transfer/search_results.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "platform/sim/sim_world.h"
#include "support/doubles.h"
#include "transfer/search_commands.h"
#include "transfer/search_slots.h"

namespace velmora {
namespace {

using namespace std::string_literals;

class KnownNames : public HostNames {
 public:
  std::string dns_from_cache(const std::string& address) override {
    return names.contains(address) ? names.at(address) : "?";
  }
  std::map<std::string, std::string> names;
};

QueryHit hit_of(const std::string& address, std::vector<QueryHitResult> entries) {
  QueryHit hit;
  hit.hits = static_cast<std::uint8_t>(entries.size());
  hit.port = 6345;
  hit.address = address;
  hit.speed = 1500;
  hit.results = std::move(entries);
  hit.servent_guid = "0123456789abcdef";
  return hit;
}

class SearchResultsTest : public testing::Test {
 protected:
  Form form_;
  sim::SimWorld world_;
  Platform platform_ = world_.add_host("10.0.0.9").platform();
  Lines log_;
  KnownNames names_;
  int cache_redraws_ = 0;
  SearchResults results_{platform_.loop, form_, log_, names_, [this] { ++cache_redraws_; }};

  [[nodiscard]] std::vector<std::string> row(std::size_t number) const {
    std::vector<std::string> cells;
    for (std::size_t c = 1; c <= form_.lfound.columns().size(); ++c) {
      cells.push_back(form_.lfound.cell(number, c));
    }
    return cells;
  }
};

TEST_F(SearchResultsTest, AHitIsCountedAtOnceAndShownByTheDelayTimer) {
  results_.set_query_reply_view(
      hit_of("10.0.0.1", {{7, 1234567, "a.b.MP3\1"s + "44100\1"s + "128"}, {8, 0, "readme"}}));
  world_.run_for(500);
  results_.set_query_reply_view(hit_of("10.0.0.2", {{9, 20, "song.mp3"}}));
  EXPECT_EQ(form_.totalsearch.text(), "3");
  world_.run_for(999);  // the second counts anew with each hit
  EXPECT_EQ(form_.lfound.rows(), 0U);
  EXPECT_EQ(cache_redraws_, 0);
  world_.run_for(5000);
  EXPECT_EQ(cache_redraws_, 1);
  ASSERT_EQ(form_.lfound.rows(), 3U);
  EXPECT_EQ(row(1), (std::vector<std::string>{"a.b", "mp3", "1,234,567", "10.0.0.1:6345", "1,500",
                                              "44,100", "128"}));
  EXPECT_EQ(row(2), (std::vector<std::string>{"readme", "", "", "10.0.0.1:6345", "1,500", "", ""}));
  EXPECT_EQ(form_.lfound.cell_tooltip(1, 1), "a.b");

  const search_result& third = results_.search_results().at(3);
  EXPECT_EQ(third.file_index, 9);
  EXPECT_EQ(third.size, "20");
  EXPECT_EQ(third.port, "6345");
  EXPECT_EQ(std::string(third.servent_guid.begin(), third.servent_guid.end()), "0123456789abcdef");
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(SearchResultsTest, TheLocationTellsWhatIsKnownOfTheHost) {
  names_.names = {{"10.0.0.2", "??"}, {"10.0.0.3", "ahost.example"}};
  for (const char* address : {"10.0.0.1", "10.0.0.2", "10.0.0.3"}) {
    results_.set_query_reply_view(hit_of(address, {{1, 1, "x.y"}}));
  }
  results_.display_query_reply();
  const auto cells = [&](std::size_t r) {
    return form_.lfound.cell(r, 4) + "|" + form_.lfound.cell_tooltip(r, 4);
  };
  EXPECT_EQ(cells(1), "10.0.0.1:6345|Didn't resolve yet");
  EXPECT_EQ(cells(2), "10.0.0.2:6345|Unresolved");
  EXPECT_EQ(cells(3), "10.0.0.3:6345|10.0.0.3:6345  ahost.example");

  form_.show_dns.set_checked(true);
  EXPECT_EQ(cells(3), "10.0.0.3:6345|10.0.0.3:6345  ahost.example");  // until the next redraw
  results_.display_query_reply();
  EXPECT_EQ(cells(2), "10.0.0.2:6345|Unresolved");
  EXPECT_EQ(cells(3), "ahost.example:6345|ahost.example   10.0.0.3:6345");
}

TEST_F(SearchResultsTest, StopIgnoresHitsAndClearStartsAnew) {
  results_.set_query_reply_view(hit_of("10.0.0.1", {{1, 1, "x.y"}}));
  form_.stop_search.set_checked(true);
  results_.set_query_reply_view(hit_of("10.0.0.1", {{2, 2, "z.y"}}));
  EXPECT_EQ(form_.totalsearch.text(), "1");
  results_.display_query_reply();
  EXPECT_EQ(form_.lfound.rows(), 1U);

  form_.clear_search.click();
  EXPECT_EQ(form_.totalsearch.text(), "0");
  EXPECT_EQ(form_.lfound.rows(), 0U);
  form_.stop_search.set_checked(false);
  results_.set_query_reply_view(hit_of("10.0.0.1", {{3, 3, "w.y"}}));
  EXPECT_EQ(results_.search_results().at(1).name, "w");
}

TEST_F(SearchResultsTest, HostileHitsAreReportedAndHarmNothingThatIsThere) {
  results_.set_query_reply_view(hit_of("10.0.0.1", {{1, 1, "x.y"}}));
  results_.set_query_reply_view(hit_of("10.0.0.1", {{4294967040.0F, 1, "big.y"}}));
  EXPECT_EQ(log_.lines, std::vector<std::string>{"Error: set_query_reply_view: Overflow"});
  EXPECT_EQ(results_.search_results().at(1).name, "x");

  QueryHit boasting = hit_of("10.0.0.1", {{2, 2, "z.y"}});
  boasting.hits = 200;
  const std::size_t before = results_.search_results().upper_bound();
  results_.set_query_reply_view(boasting);
  EXPECT_EQ(results_.search_results().upper_bound(), before + 1);
}

TEST_F(SearchResultsTest, RowsAndBytesHaveABudgetThatClearGivesBack) {
  const QueryHit many = hit_of("10.0.0.1", std::vector<QueryHitResult>(255, {1, 1, "x.y"}));
  for (int i = 0; i < 785; ++i) results_.set_query_reply_view(many);
  EXPECT_EQ(results_.search_results().upper_bound(), 784U * 255U);  // the next would be 200,175
  EXPECT_EQ(log_.lines, std::vector<std::string>{"Error: set_query_reply_view: Out of memory"});
  EXPECT_EQ(form_.totalsearch.text(), "199920");

  results_.clear_search();
  log_.lines.clear();
  const std::string fat_name(std::size_t{32} << 20, 'x');
  const QueryHit fat = hit_of("10.0.0.1", {{1, 1, fat_name}});
  for (int i = 0; i < 3; ++i) results_.set_query_reply_view(fat);
  EXPECT_EQ(results_.search_results().upper_bound(), 2U);
  EXPECT_EQ(log_.lines, std::vector<std::string>{"Error: set_query_reply_view: Out of memory"});
}

TEST(SearchCommands, SendsTheSearchAndClearsStop) {
  struct Sender : QuerySender {
    explicit Sender(Form& f) : form(f) {}
    void send_query(const std::string& text) override {
      sent.push_back(text + (form.stop_search.checked() ? " (stopped)" : ""));
    }
    Form& form;
    std::vector<std::string> sent;
  };
  Form form;
  Sender sender(form);
  const SearchCommands commands(form, sender);
  form.stop_search.set_checked(true);
  form.Tsearch.set_text("one");
  form.start_search.click();
  EXPECT_FALSE(form.stop_search.checked());
  form.stop_search.set_checked(true);
  form.Tsearch.enter("two");
  EXPECT_FALSE(form.stop_search.checked());
  // The button clears the check box behind the query, the key before it.
  EXPECT_EQ(sender.sent, (std::vector<std::string>{"one (stopped)", "two"}));
}

TEST(SearchSlots, EachSearchReplacesTheOneInItsSlot) {
  Form form;
  SearchSlots slots(form);
  EXPECT_EQ(slots.current_search(), 1);
  slots.remember_search("one", "g1");
  form.search_num.choose(3);
  slots.remember_search("two", "g2");
  slots.remember_search("three", "g3");
  EXPECT_EQ(slots.search_slots()[0].text, "one");
  EXPECT_EQ(slots.search_slots()[1].text, "");
  EXPECT_EQ(slots.search_slots()[2].text, "three");
  EXPECT_EQ(slots.search_slots()[2].guid, "g3");
  for (const std::int16_t wrong : {std::int16_t{0}, std::int16_t{4}, std::int16_t{-1}}) {
    slots.set_current_search(wrong);
    EXPECT_THROW(slots.remember_search("x", "y"), PlatformError) << wrong;
  }
}

}  // namespace
}  // namespace velmora
