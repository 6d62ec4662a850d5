// An evening with the program, by mouse and keyboard alone: connect, search, sort, fetch, share,
// stop an upload. On the other side of a simulated network is a second whole servent.
#include <gmock/gmock.h>

#include <QHeaderView>
#include <QTableView>

#include "window_rig.h"

namespace velmora::ui {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class TransferSession : public testing::Test {
 protected:
  TransferSession() {
    sim::SimFiles& theirs = other_host_.files();
    theirs.put("/music/big song.ogg", std::string(20'000, 'b'));
    theirs.put("/music/little song.ogg", std::string(900, 'l'));
    theirs.put("/music/song.ogg", std::string(10'000, 's'));
    theirs.make_folder("/theirs");
    other_.start();
    other_.form().upload_config.enter("/music");
    other_.form().scan_config.click();
    other_.form().down_config.set_text("/theirs");
    my_files().make_folder("/mine");
    my_files().put("/share/my tune.ogg", std::string(300'000, 'm'));
    rig_.settle();
  }

  Form& form() { return rig_.form(); }
  sim::SimFiles& my_files() { return rig_.servent_rig().host.files(); }

  std::vector<std::string> column(const ListView& list, int number) {
    std::vector<std::string> texts;
    for (int row = 1; row <= rig_.shown_rows(list); ++row) {
      texts.push_back(rig_.shown_cell(list, row, number).toStdString());
    }
    return texts;
  }
  void double_click(const ListView& list, const std::string& first_cell) {
    const auto names = column(list, 1);
    const auto found = std::find(names.begin(), names.end(), first_cell);
    ASSERT_NE(found, names.end()) << first_cell;
    rig_.double_click_row(list, static_cast<int>(found - names.begin()) + 1);
  }
  void click_header(const ListView& list, int number) {
    QHeaderView& header = *rig_.widget<QTableView>(list).horizontalHeader();
    const QPoint at(header.sectionViewportPosition(number - 1) + header.sectionSize(number - 1) / 2,
                    header.height() / 2);
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, at);
    rig_.settle();
  }

  void connect_to_other() {
    rig_.go_to(Page::hosts);
    rig_.type(form().new_host, "10.0.0.2");
    rig_.settle(1000);
    ASSERT_THAT(column(form().lHosts, 4), ElementsAre("Connected"));
  }
  void search(const QString& words) {
    rig_.go_to(Page::search);
    rig_.type(form().Tsearch, words);
    rig_.settle(2500);  // the list is redrawn a second after the last result
  }

  WindowRig rig_;
  sim::SimHost& other_host_ = rig_.world().add_host("10.0.0.2");
  Servent other_{other_host_.platform(), {}};
};

TEST_F(TransferSession, FindsSortsQueuesAndFetchesAFile) {
  rig_.go_to(Page::search);
  rig_.type(form().Tsearch, "song", false);
  rig_.click(form().start_search);
  EXPECT_EQ(rig_.status(), "No Connections to send query!");
  rig_.go_to(Page::hosts);
  rig_.type(form().new_host, "10.0.2");
  EXPECT_EQ(rig_.status(), "Not a valid IP!, need 3 dots");

  connect_to_other();
  search("song");
  EXPECT_EQ(rig_.status(), "Sent Query, waiting for replies...");
  EXPECT_EQ(rig_.widget<QLabel>(form().totalsearch).text(), "3");
  const std::string first = form().lfound.cell(1, 1);

  click_header(form().lfound, 3);
  EXPECT_THAT(column(form().lfound, 3), ElementsAre("900", "10,000", "20,000"));
  click_header(form().lfound, 3);
  EXPECT_THAT(column(form().lfound, 3), ElementsAre("20,000", "10,000", "900"));
  EXPECT_EQ(form().lfound.cell(1, 1), first) << "the program's own order stays";

  double_click(form().lfound, "song");
  EXPECT_EQ(rig_.status(), "Queued. \"Resume\" on the page \"Download\" starts it.");
  double_click(form().lfound, "song");
  EXPECT_EQ(rig_.status(), "This file is already qued to Download.");
  rig_.go_to(Page::configuration);
  rig_.type(form().down_config, "/mine", false);
  rig_.go_to(Page::download);
  EXPECT_THAT(column(form().ldown, 1), ElementsAre("song.ogg"));
  EXPECT_THAT(column(form().ldown, 3), ElementsAre("Queued"));
  rig_.click(form().resume_down);
  rig_.settle(1500);
  EXPECT_THAT(column(form().ldown, 3), ElementsAre(StartsWith("Downloading")));
  rig_.settle(10'000);
  EXPECT_THAT(column(form().ldown, 3), ElementsAre("Done"));
  EXPECT_EQ(my_files().content("/mine/song.ogg"), std::string(10'000, 's'));

  rig_.go_to(Page::search);
  rig_.click(form().clear_search);
  rig_.type(form().Tsearch, "song");
  rig_.tick(form().stop_search);  // before the first result can be there
  rig_.settle(2500);
  EXPECT_EQ(rig_.shown_rows(form().lfound), 0);
  EXPECT_EQ(rig_.widget<QLabel>(form().totalsearch).text(), "0");
}

TEST_F(TransferSession, WithWholeFilesAQueuedResultStartsByItself) {
  form().behaviour_boxes[7].click();
  form().down_config.set_text("/mine");
  connect_to_other();
  search("song");
  double_click(form().lfound, "song");
  EXPECT_EQ(rig_.status(), "Queued.");
  rig_.settle(10'000);
  EXPECT_TRUE(my_files().exists("/mine/song.ogg"));
}

TEST_F(TransferSession, SharesAFolderAndStopsAnUpload) {
  rig_.go_to(Page::configuration);
  rig_.type(form().upload_config, "/share");
  rig_.click(form().scan_config);
  rig_.settle();
  EXPECT_EQ(rig_.widget<QLabel>(form().sharenum_config).text(), "1");
  connect_to_other();
  Form& theirs = other_.form();
  theirs.Tsearch.enter("tune");
  rig_.settle(2500);
  ASSERT_EQ(theirs.lfound.rows(), 1U);
  theirs.lfound.activate(1);
  theirs.resume_down.click();
  rig_.settle(3000);

  rig_.go_to(Page::upload);
  EXPECT_THAT(column(form().lupload, 1), ElementsAre("my tune.ogg"));
  EXPECT_THAT(column(form().lupload, 3), ElementsAre(StartsWith("Uploading")));
  double_click(form().lupload, "my tune.ogg");
  rig_.settle(3000);
  EXPECT_THAT(column(form().lupload, 3), ElementsAre("You Stopped"));
  EXPECT_EQ(theirs.ldown.cell(1, 3), "Stopped");
  EXPECT_THAT(theirs.ldown.cell_tooltip(1, 3), HasSubstr("I'm stopping your download because..."));

  rig_.go_to(Page::hosts);
  double_click(form().lHosts, column(form().lHosts, 1).at(0));
  EXPECT_THAT(column(form().lHosts, 4), ElementsAre("Disconnecting"));
  rig_.settle();
  EXPECT_EQ(theirs.lHosts.cell(1, 4), "Disconnected");
  rig_.settle(6000);
  EXPECT_THAT(column(form().lHosts, 4), ElementsAre("Sock freed"));
}

}  // namespace
}  // namespace velmora::ui
