// A list as a person uses it: clicks, keys, menus, columns, and the rows of running transfers.
#include "ui/widgets/list_table.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include "platform/error.h"
#include "ui/list_source.h"
#include "ui/widgets/list_header.h"
#include "ui/widgets/list_model.h"
#include "ui/widgets/status_delegate.h"

namespace velmora::ui {
namespace {

class ListTableTest : public testing::Test {
 protected:
  ListTableTest() {
    list_.view.on_activate = [this](std::size_t row) { activated_ = list_.view.row_key(row); };
    list_.show({{"b", "30", ""}, {"c", "200", ""}, {"a", "1,000", ""}});
    table_.on_error = [this](const QString& text) { error_ = text; };
    table_.resize(900, 300);
    table_.show();
    table_.refresh();
  }

  QPoint middle_of(int row, int column) {
    return table_.visualRect(table_.model()->index(row, column)).center();
  }
  void click(int row, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(table_.viewport(), Qt::LeftButton, keys, middle_of(row, 0));
  }
  void click_head(int column) {
    const int x = table_.list_header().sectionViewportPosition(column) + 20;
    QTest::mouseClick(table_.list_header().viewport(), Qt::LeftButton, {}, QPoint(x, 5));
  }
  std::string selected_in_form() {
    const std::size_t row = list_.view.selected();
    return row == 0 ? "" : list_.view.row_key(row);
  }
  std::string marked() {
    std::string keys;
    for (const QModelIndex& index : table_.selectionModel()->selectedRows()) {
      keys += index.data().toString().toStdString();
    }
    std::sort(keys.begin(), keys.end());
    return keys;
  }
  static QMenu* menu_at(QWidget* widget, const QPoint& at) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, widget->mapToGlobal(at));
    QApplication::sendEvent(widget, &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
  }
  // Opens the menu there and triggers the line with that text, in a sub-menu where it stands there.
  void choose(QWidget* widget, const QPoint& at, const QString& text) {
    QMenu* menu = menu_at(widget, at);
    ASSERT_NE(menu, nullptr);
    QAction* found = nullptr;
    QList<QAction*> actions = menu->actions();
    while (found == nullptr && !actions.isEmpty()) {
      QAction* action = actions.takeFirst();
      if (action->menu() != nullptr) actions += action->menu()->actions();
      if (action->text().remove('&') == text && action->isEnabled()) found = action;
    }
    if (found != nullptr) found->trigger();
    menu->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_NE(found, nullptr) << text.toStdString();
  }
  static std::string copied() { return QApplication::clipboard()->text().toStdString(); }

  ScriptedList list_{{"Filename", "Size", "Status"}};
  double now_s_ = 0;
  ListTable table_{list_.view, nullptr, [this] { return now_s_; }};
  std::string activated_;
  QString error_;
};

TEST_F(ListTableTest, ChoiceIsOfAnEntryInFormAndTable) {
  click_head(1);  // shown: b c a, as 30, 200, 1,000
  click(2);
  EXPECT_EQ(selected_in_form(), "a");
  click(0, Qt::ControlModifier);
  EXPECT_EQ(selected_in_form(), "b");
  EXPECT_EQ(marked(), "ab");

  // Both move, and c goes.
  list_.show({{"a", "5", ""}, {"x", "7", ""}, {"b", "30", ""}});
  table_.refresh();
  EXPECT_EQ(selected_in_form(), "b");
  EXPECT_EQ(marked(), "ab");
  EXPECT_EQ(table_.currentIndex().data().toString(), "b");

  list_.view.select(2);  // by somebody else
  table_.refresh();
  EXPECT_EQ(marked(), "x");
  EXPECT_EQ(table_.currentIndex().data().toString(), "x");

  list_.show({{"a", "5", ""}, {"b", "30", ""}});
  table_.refresh();
  EXPECT_EQ(marked(), "");
  EXPECT_EQ(selected_in_form(), "");
}

TEST_F(ListTableTest, TheFocusAloneChoosesNothing) {
  table_.setFocus();
  QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
  QApplication::sendEvent(&table_, &focus);
  EXPECT_EQ(selected_in_form(), "");
  QTest::keyClick(&table_, Qt::Key_End);
  EXPECT_EQ(selected_in_form(), "a");
}

TEST_F(ListTableTest, DoubleClickEnterAndTheMenuDoTheSame) {
  table_.set_activate_text("Queue the download");
  table_.sortByColumn(0, Qt::DescendingOrder);  // shown: c b a
  click(0);
  QTest::mouseDClick(table_.viewport(), Qt::LeftButton, {}, middle_of(0, 1));
  EXPECT_EQ(activated_, "c");
  QTest::keyClick(&table_, Qt::Key_Down);
  QTest::keyClick(&table_, Qt::Key_Return);
  EXPECT_EQ(activated_, "b");
  click(2);
  choose(table_.viewport(), middle_of(2, 0), "Queue the download");
  EXPECT_EQ(activated_, "a");
  const QPoint beside(50, table_.viewport()->height() - 5);
  QTest::mouseClick(table_.viewport(), Qt::RightButton, {}, beside);
  EXPECT_FALSE(menu_at(table_.viewport(), beside)->defaultAction()->isEnabled());
  QApplication::activePopupWidget()->close();

  list_.view.on_activate = [](std::size_t) { throw PlatformError(Errc::subscript_out_of_range); };
  QTest::keyClick(&table_, Qt::Key_Enter);
  EXPECT_EQ(error_, "Subscript out of range");
}

TEST_F(ListTableTest, CopiesWhatIsShown) {
  list_.show({{"b\tx", "30", "s"}, {"c", "200", "t"}, {"a", "1,000", "u"}});
  table_.refresh();
  table_.list_header().moveSection(0, 1);
  choose(table_.list_header().viewport(), QPoint(5, 5), "Status");
  click(0);
  click(2, Qt::ShiftModifier);
  QTest::keyClick(&table_, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(copied(), "30\tb\xE2\x90\x89x\n200\tc\n1,000\ta\n");
  click(1);
  choose(table_.viewport(), middle_of(1, 0), "Copy");
  EXPECT_EQ(copied(), "200\tc");
  choose(table_.viewport(), middle_of(1, 0), "Copy cell");
  EXPECT_EQ(copied(), "c");
}

TEST_F(ListTableTest, HeadSortsUpDownAndNotAtAll) {
  const auto shown_keys = [&] {
    std::string keys;
    for (int row = 0; row < 3; ++row)
      keys += table_.model()->index(row, 0).data().toString()[0].toLatin1();
    return keys;
  };
  for (const char* expected : {"abc", "cba", "bca"}) {
    click_head(0);
    EXPECT_EQ(shown_keys(), expected);
  }
  choose(table_.viewport(), middle_of(0, 0), "Size, descending");
  EXPECT_EQ(shown_keys(), "acb");
  choose(table_.viewport(), middle_of(0, 0), "Unsorted");
  EXPECT_EQ(shown_keys(), "bca");
}

TEST_F(ListTableTest, ColumnsFillTheWidthAndAreRemembered) {
  const QTemporaryDir folder;
  QSettings settings(folder.filePath("window.ini"), QSettings::IniFormat);
  ListHeader& header = table_.list_header();
  EXPECT_EQ(header.length(), table_.viewport()->width());
  EXPECT_EQ(
      table_.model()->headerData(1, Qt::Horizontal, Qt::TextAlignmentRole).value<Qt::Alignment>(),
      Qt::AlignRight | Qt::AlignVCenter);
  table_.remember_in(&settings);
  header.resizeSection(1, 111);
  EXPECT_EQ(header.length(), table_.viewport()->width());
  header.resizeSection(0, 77);
  header.moveSection(0, 1);
  choose(header.viewport(), QPoint(5, 5), "Status");
  click_head(1);

  ListTable again(list_.view);
  again.remember_in(&settings);
  again.resize(1200, 300);
  EXPECT_EQ(again.list_header().sectionSize(0), 77);
  EXPECT_EQ(again.list_header().sectionSize(1), 111);
  EXPECT_EQ(again.list_header().visualIndex(0), 1);
  EXPECT_TRUE(again.list_header().isSectionHidden(2));
  EXPECT_EQ(again.model()->index(2, 0).data().toString(), "a");

  // What is no state of these columns changes nothing: not a broken one, not one that hides all.
  for (int section = 0; section < 3; ++section) header.hideSection(section);
  for (const QByteArray& state : {QByteArray("broken"), header.saveState()}) {
    settings.setValue("lists/lfound/columns", state);
    ListTable fresh(list_.view);
    fresh.remember_in(&settings);
    EXPECT_EQ(fresh.list_header().hiddenSectionCount(), 0);
    EXPECT_EQ(fresh.list_header().visualIndex(0), 0);
  }
}

TEST_F(ListTableTest, AnEmptyListSaysWhatToDo) {
  table_.set_empty_hint("Type a host and press Enter.");
  EXPECT_EQ(table_.accessibleDescription(), "What was <b>found</b>.");
  list_.show({});
  table_.refresh();
  EXPECT_EQ(table_.accessibleDescription(), "Type a host and press Enter.");
  const QImage hinted = table_.viewport()->grab().toImage();
  table_.set_empty_hint("");
  EXPECT_NE(hinted, table_.viewport()->grab().toImage());
}

TEST_F(ListTableTest, ARunningTransferIsABar) {
  list_.transfer = RowProgress{4'500'000, 10'000'000, true};
  list_.show({{"b", "30", "Downloading 45%"}, {"c", "200", "Downloading 45%"}});
  table_.refresh();
  const auto highlighted = [&](int row) {
    const QRect cell = table_.visualRect(table_.model()->index(row, 2)).adjusted(3, 3, -3, -3);
    const QImage image = table_.viewport()->grab(cell).toImage();
    const QColor bar = table_.palette().color(QPalette::Highlight);
    int columns = 0;
    for (int x = 0; x < image.width(); ++x) columns += image.pixelColor(x, 1) == bar ? 1 : 0;
    return 100.0 * columns / image.width();
  };
  EXPECT_NEAR(highlighted(0), 45, 3);
  EXPECT_EQ(highlighted(1), 0);

  const auto joined = [](const QString& status, const RowProgress& progress, double rate) {
    return StatusDelegate::texts(status, progress, rate).join("|").toStdString();
  };
  EXPECT_EQ(joined("Downloading 45%", {4.5e6, 1e7, true}, 1258291),
            "Downloading 45 %  1.2 MiB/s  0:05 left|Downloading 45 %  1.2 MiB/s|"
            "45 %  1.2 MiB/s|Downloading 45 %|45 %");
  EXPECT_EQ(joined("Uploading", {20, 10, true}, 0), "Uploading 100 %|100 %");
  EXPECT_EQ(joined("Connected", {0, 0, true}, 5), "Connected");
}

}  // namespace
}  // namespace velmora::ui
