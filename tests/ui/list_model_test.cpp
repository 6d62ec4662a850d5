// The order of a list's rows, and what becomes of rows that somebody watches, in small and large
// lists.
#include "ui/widgets/list_model.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <algorithm>
#include <random>

#include "ui/list_source.h"
#include "ui/widgets/list_sort_key.h"
#include "ui/widgets/list_table.h"

namespace velmora::ui {
namespace {

using testing::ElementsAreArray;

std::vector<std::string> column(const ListModel& model, int at) {
  std::vector<std::string> texts;
  for (int row = 0; row < model.rowCount(); ++row) {
    texts.push_back(model.index(row, at).data().toString().toStdString());
  }
  return texts;
}

TEST(ListSorting, CellsGoByWhatTheyMeanAndEmptyOnesAreLast) {
  const std::vector<std::vector<std::string>> in_order = {
      {"-3", "0", "0.5", "9", "1,000", "12,345", "4,294,967,295"},
      {"2/9/9", "12 / 3", "12 / 20", "12/20/1", "100/0/0"},
      {"9.0.0.1:80", "10.0.0.2:6346", "10.0.0.2:12000", "10.0.0.10:1", "host.example:9",
       "Host.example:10"},
      {"7", "1,2,3", "1e5.mp3", "apple", "Banana", "track 9", "Track 10", "zebra",
       std::string("\xC3\x89") + "clair", "\xC3\xA9toile"},
  };
  for (const auto& cells : in_order) {
    ScriptedList list({"Key", "Size"});
    for (const auto& cell : cells) list.table.push_back({"k", cell});
    list.table.insert(list.table.begin() + 1, {"k", ""});
    std::mt19937 random(7);
    std::shuffle(list.table.begin(), list.table.end(), random);
    list.view.redraw();
    ListModel model(list.view);

    model.sort(1, Qt::AscendingOrder);
    auto expected = cells;
    expected.emplace_back();
    EXPECT_THAT(column(model, 1), ElementsAreArray(expected));

    model.sort(1, Qt::DescendingOrder);
    std::reverse(expected.begin(), expected.end() - 1);
    EXPECT_THAT(column(model, 1), ElementsAreArray(expected));
  }
}

TEST(ListSorting, EqualCellsKeepTheOrderOfTheListBothWays) {
  ScriptedList list({"Key", "Ext"});
  list.show({{"a", "mp3"}, {"b", "MP3"}, {"c", "avi"}, {"d", "mp3"}});
  ListModel model(list.view);
  model.sort(1, Qt::AscendingOrder);
  EXPECT_THAT(column(model, 0), testing::ElementsAre("c", "a", "b", "d"));
  model.sort(1, Qt::DescendingOrder);
  EXPECT_THAT(column(model, 0), testing::ElementsAre("a", "b", "d", "c"));
  model.sort(-1, Qt::AscendingOrder);
  EXPECT_THAT(column(model, 0), testing::ElementsAre("a", "b", "c", "d"));
}

// A list in which rows come, go, move and change while it is sorted this way and that.
class ChangingList : public testing::TestWithParam<int> {
 protected:
  ChangingList() : model_(list_.view) {}

  std::vector<std::string> new_row() {
    return {"key" + std::to_string(next_++), std::to_string(random_() % 500)};
  }
  std::size_t any_row() { return random_() % list_.table.size(); }
  auto at(std::size_t row) { return list_.table.begin() + static_cast<std::ptrdiff_t>(row); }

  void change() {
    switch (random_() % 6) {
      case 0:
        for (int i = 0; i < 5; ++i) list_.table.push_back(new_row());
        return;
      case 1:
        list_.table.insert(list_.table.begin(), new_row());
        return;
      case 2:
        list_.table.erase(at(any_row()));
        return;
      case 3:
        std::rotate(list_.table.begin(), at(any_row()), list_.table.end());
        return;
      case 4:
        list_.table.resize(std::max<std::size_t>(list_.table.size() - 3, 10));
        return;
      default:
        list_.table[any_row()][1] = std::to_string(random_() % 500);
    }
  }

  // Follows three rows through one change; each stays with its entry or ends with it.
  void change_under_watch() {
    std::vector<std::size_t> rows = {any_row() + 1, any_row() + 1, any_row() + 1};
    std::vector<std::pair<std::string, QPersistentModelIndex>> watched;
    for (const std::size_t row : rows) {
      watched.emplace_back(list_.view.row_key(row), model_.index_of(row));
    }
    model_.follow(rows);
    change();
    list_.view.redraw();
    model_.refresh();
    for (const auto& [key, index] : watched) {
      const bool lives = std::any_of(list_.table.begin(), list_.table.end(),
                                     [key = key](const auto& row) { return row[0] == key; });
      ASSERT_EQ(index.isValid() ? index.data().toString().toStdString() : "", lives ? key : "");
    }
  }

  void expect_every_row_once(int sorted_by) {
    std::vector<std::string> keys = column(model_, 0);
    std::vector<std::string> expected;
    for (const auto& row : list_.table) expected.push_back(row[0]);
    if (sorted_by < 0) {
      ASSERT_EQ(keys, expected);
      return;
    }
    const std::vector<std::string> cells = column(model_, sorted_by);
    ASSERT_TRUE(std::is_sorted(cells.begin(), cells.end(), [](const auto& a, const auto& b) {
      return sort_key(a) < sort_key(b);
    }));
    std::sort(keys.begin(), keys.end());
    std::sort(expected.begin(), expected.end());
    ASSERT_EQ(keys, expected);
  }

  ScriptedList list_{{"Key", "Size"}};
  ListModel model_;
  QAbstractItemModelTester tester_{&model_, QAbstractItemModelTester::FailureReportingMode::Fatal};
  std::mt19937 random_{20};
  int next_ = 0;
};

TEST_P(ChangingList, ShowsEveryRowOnceAndSorted) {
  for (int i = 0; i < GetParam(); ++i) list_.table.push_back(new_row());
  list_.view.redraw();
  model_.refresh();
  for (const int sorted_by : {-1, 1, 0, -1}) {
    model_.sort(sorted_by, Qt::AscendingOrder);
    for (int step = 0; step < (GetParam() > 2000 ? 15 : 60); ++step) {
      SCOPED_TRACE(testing::Message() << "by " << sorted_by << ", step " << step);
      ASSERT_NO_FATAL_FAILURE(change_under_watch());
      // In a large list one cell that changed among many may wait for its turn to be checked.
      for (int turn = 0; turn < GetParam() / 4096 + 1; ++turn) {
        list_.view.redraw();
        model_.refresh();
      }
      ASSERT_NO_FATAL_FAILURE(expect_every_row_once(sorted_by));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, ChangingList, testing::Values(20, 5000));

TEST(ListModelTest, ARowThatTheProgramHasLostIsShownEmpty) {
  ScriptedList list({"Key", "Size"});
  list.show({{"a", "1"}, {"b", "2"}});
  const ListModel model(list.view);
  list.table.pop_back();
  EXPECT_EQ(model.index(1, 0).data().toString(), "");
  const QString tip = model.index(0, 0).data(Qt::ToolTipRole).toString();
  EXPECT_TRUE(tip.contains("&lt;i&gt;tip&lt;/i&gt;")) << tip.toStdString();
}

// The bounds are wide enough for a busy machine and a sanitizer; merging is measured against
// sorting.
TEST(ListSpeed, TwoHundredThousandRows) {
  ScriptedList list({"Filename", "Ext", "Size", "Location", "Speed", "Freq", "BitR"});
  std::mt19937 random(3);
  const auto add = [&](int count) {
    for (int i = 0; i < count; ++i) {
      const auto n = random();
      list.table.push_back({"Some artist - a song of " + std::to_string(n % 5000) + ".mp3", "mp3",
                            std::to_string(n % 900 + 1) + "," + std::to_string(n % 900 + 100),
                            "10." + std::to_string(n % 256) + ".7.9:6346", "56", "44,100",
                            "128,000"});
    }
    list.view.redraw();
  };
  ListTable table(list.view);
  table.resize(900, 600);
  table.show();
  const auto timed = [&](const std::string& what, const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    table.grab();
    const double ms = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    std::printf("  %-44s %7.1f ms\n", what.c_str(), ms);
    EXPECT_LT(ms, 15'000) << what;
    return ms;
  };
  const auto best_refresh = [&](const std::string& what) {
    double best = 1e9;
    for (int turn = 0; turn < 3; ++turn) {
      add(2000);
      best = std::min(best, timed(what, [&] { table.refresh(); }));
    }
    return best;
  };
  add(200'000);
  timed("first refresh", [&] { table.refresh(); });
  EXPECT_LT(best_refresh("refresh, 2,000 new rows, unsorted"), 500);
  for (const int column : {0, 2, 3}) {
    const double sorting = timed("first sort, column " + std::to_string(column),
                                 [&] { table.sortByColumn(column, Qt::AscendingOrder); });
    EXPECT_LT(best_refresh("refresh, 2,000 new rows, sorted"), sorting / 3);
  }
  timed("100 steps of scrolling, painted", [&] {
    for (int i = 0; i < 100; ++i) {
      table.scrollTo(table.model()->index(i * 2000, 0));
      table.grab();
    }
  });
  timed("typing ahead, no row found", [&] { table.keyboardSearch("no such"); });
  timed("all rows marked", [&] { table.selectAll(); });
  EXPECT_LT(best_refresh("refresh, 2,000 new rows, all others marked"), 500);
  EXPECT_EQ(table.selectionModel()->selectedRows().size(), 230'000);
  timed("copy of the first rows", [&] { table.copy_rows(); });
  EXPECT_EQ(table.model()->rowCount(), 230'000);
}

}  // namespace
}  // namespace velmora::ui
