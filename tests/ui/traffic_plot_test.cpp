// The traffic plot as a person sees it: its words and its picture.
#include "ui/traffic_plot.h"

#include <gmock/gmock.h>

#include <QRadioButton>
#include <QTest>

namespace velmora::ui {
namespace {

using testing::HasSubstr;

class TrafficPlotTest : public testing::Test {
 protected:
  TrafficPlotTest() { plot_.resize(700, 400); }

  void feed(int seconds) {
    for (int i = 0; i < seconds; ++i) {
      counters_.bytes_received += 1536;
      counters_.bytes_sent += 100;
      counters_.pings_in += 40;
      counters_.query_hits_in += 2000;
      history_.add(counters_, 3, 2);
    }
  }

  void choose_descriptors() {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&plot_));
    auto* bytes = plot_.findChild<QRadioButton*>();
    bytes->setFocus();
    QTest::keyClick(bytes, Qt::Key_Right);
    EXPECT_FALSE(bytes->isChecked());
  }

  std::string words() const { return plot_.accessibleDescription().toStdString(); }

  // Where in the picture a colour is seen: leftmost and rightmost column, and how many pixels.
  struct Seen {
    int left = -1, right = -1, pixels = 0;
  };
  Seen seen(QRgb colour) {
    const QImage picture = plot_.grab().toImage();
    const QColor wanted(colour);
    Seen result;
    for (int x = 0; x < picture.width(); ++x) {
      for (int y = 0; y < picture.height(); ++y) {
        const QColor found = picture.pixelColor(x, y);
        if (std::abs(found.red() - wanted.red()) + std::abs(found.green() - wanted.green()) +
                std::abs(found.blue() - wanted.blue()) >
            24)
          continue;
        if (result.left < 0) result.left = x;
        result.right = x;
        ++result.pixels;
      }
    }
    return result;
  }

  TrafficHistory history_;
  TrafficCounters counters_;
  TrafficPlot plot_{history_};
};

constexpr QRgb kBlueOnLight = 0xff0072b2, kBlueOnDark = 0xff56b4e9, kHitsOnLight = 0xffa63a79;

TEST_F(TrafficPlotTest, TellsTheLastSecondInWordsWhileItIsSeen) {
  plot_.show();
  EXPECT_THAT(words(), HasSubstr("Nothing"));
  feed(3);
  plot_.refresh();
  EXPECT_THAT(words(), HasSubstr("1.5 KiB/s in, 100 B/s out. Connections: 3 in, 2 out."));
  EXPECT_THAT(words(), HasSubstr("40 pings, 0 pongs, 0 queries, 2,000 query hits"));

  plot_.hide();
  counters_.pings_in += 7;
  feed(1);
  plot_.refresh();
  EXPECT_THAT(words(), HasSubstr("40 pings")) << "nobody sees it";
  plot_.show();
  EXPECT_THAT(words(), HasSubstr("47 pings"));
}

TEST_F(TrafficPlotTest, DrawsTheNewestAtTheRight) {
  plot_.show();
  feed(300);
  plot_.refresh();
  const Seen half = seen(kBlueOnLight);
  EXPECT_GT(half.right, 670);
  feed(600);
  plot_.refresh();
  const Seen whole = seen(kBlueOnLight);
  EXPECT_GT(whole.pixels, half.pixels + 200);
}

TEST_F(TrafficPlotTest, FollowsThePaletteAndTheKeyboard) {
  plot_.show();
  feed(600);
  plot_.refresh();
  QPalette dark = plot_.palette();
  dark.setColor(QPalette::Base, QColor(25, 25, 25));
  dark.setColor(QPalette::Text, QColor(240, 240, 240));
  plot_.setPalette(dark);
  EXPECT_GT(seen(kBlueOnDark).pixels, 500);
  EXPECT_LT(seen(kBlueOnLight).pixels, 20);
  EXPECT_GT(seen(qRgb(25, 25, 25)).pixels, 100000) << "the background";
  EXPECT_GT(seen(qRgb(240, 240, 240)).pixels, 100) << "axes and legend";

  plot_.setPalette(QPalette());
  EXPECT_LT(seen(kHitsOnLight).pixels, 20);
  choose_descriptors();
  EXPECT_GT(seen(kHitsOnLight).pixels, 500);
}

}  // namespace
}  // namespace velmora::ui
