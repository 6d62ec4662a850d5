// The directory chooser's tree, places and new folder, on a real folder of the test's own.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include "app/directory_chooser.h"
#include "ui/directory_window.h"
#include "ui/widgets/form_binding.h"

namespace velmora::ui {
namespace {

class Chooser : public testing::Test {
 protected:
  void show(const QString& path) {
    form_.down_config.set_text(path.toStdString());
    form_.download_browse_config.click();
    settle();
  }
  void settle() {
    QCoreApplication::processEvents();
    binding_.flush();
  }
  QString in_tree() { return model().filePath(window_.tree()->currentIndex()); }
  QFileSystemModel& model() { return dynamic_cast<QFileSystemModel&>(*window_.tree()->model()); }
  QString path() { return QString::fromStdString(form_.frmDir_path.text()); }

  QTemporaryDir folder_;
  Form form_;
  DirectoryChooser commands_{form_};
  FormBinding binding_{form_};
  DirectoryWindow window_{binding_, nullptr};
};

TEST_F(Chooser, TreeAndPathFollowEachOther) {
  EXPECT_EQ(window_.tree()->model(), nullptr);  // the disk is not looked at before
  const QString music = folder_.filePath("music \u00E9");
  ASSERT_TRUE(QDir().mkpath(music) && QDir().mkpath(folder_.filePath("video")));
  show("");
  EXPECT_EQ(path(), QDir::homePath());
  QTest::keyClicks(window_.focusWidget(), folder_.path());
  EXPECT_EQ(path(), folder_.path()) << "typing begins a path of its own";
  show("");
  EXPECT_EQ(path(), QDir::homePath());
  EXPECT_EQ(in_tree(), QDir::homePath());
  window_.reject();
  settle();
  EXPECT_FALSE(form_.frmDir.shown() || window_.isVisible());

  show(music);
  EXPECT_EQ(in_tree(), music);
  window_.tree()->setCurrentIndex(model().index(folder_.filePath("video")));
  EXPECT_EQ(path(), folder_.filePath("video"));
  auto* field = qobject_cast<QLineEdit*>(binding_.widget(form_.frmDir_path));
  field->setText(music + "/half");
  settle();
  EXPECT_EQ(path(), music + "/half");  // what is typed stays, also where the tree cannot go
  EXPECT_FALSE(binding_.widget(form_.frmDir_ok)->isEnabled());  // but is no choice
  EXPECT_EQ(in_tree(), folder_.filePath("video"));

  form_.upload_browse_config.click();  // while it is open for the other purpose
  settle();
  EXPECT_EQ(path(), QDir::homePath());
  EXPECT_EQ(in_tree(), QDir::homePath());
  EXPECT_TRUE(binding_.widget(form_.frmDir_ok)->isEnabled());

  QComboBox& places = *window_.places();
  emit places.activated(places.findData(QDir::rootPath()));
  settle();
  EXPECT_EQ(path(), "/");
  EXPECT_EQ(places.currentData().toString(), "/");
}

// Also after it was called off, by a button or by Escape.
TEST_F(Chooser, EnterTakesWhatIsChosen) {
  const QString music = folder_.filePath("music");
  ASSERT_TRUE(QDir().mkpath(music));
  for (const bool by_button : {false, true}) {
    show(folder_.path());
    if (by_button) binding_.widget(form_.frmDir_cancel)->setFocus();
    QTest::keyClick(by_button ? binding_.widget(form_.frmDir_cancel) : window_.tree(),
                    by_button ? Qt::Key_Space : Qt::Key_Escape);
    settle();
    ASSERT_FALSE(form_.frmDir.shown());
    show(folder_.path());
    window_.tree()->setFocus();
    window_.tree()->setCurrentIndex(model().index(music));
    QTest::keyClick(window_.tree(), Qt::Key_Return);
    settle();
    EXPECT_FALSE(form_.frmDir.shown());
    EXPECT_EQ(form_.down_config.text(), music.toStdString()) << by_button;
  }
}

TEST_F(Chooser, ShowsTheChosenFolderInTheMiddle) {
  for (int number = 10; number < 90; ++number) {
    ASSERT_TRUE(QDir().mkpath(folder_.filePath(QString::number(number))));
  }
  show(folder_.filePath("50"));
  const auto place = [this] {  // from 0, the top, to 1
    const QTreeView& tree = *window_.tree();
    return 1.0 * tree.visualRect(tree.currentIndex()).center().y() / tree.viewport()->height();
  };
  const auto in_the_middle = [&] { return place() > 0.4 && place() < 0.6; };
  const QModelIndex parent = model().index(folder_.path());
  EXPECT_TRUE(QTest::qWaitFor([&] { return model().rowCount(parent) == 80 && in_the_middle(); }))
      << place();
}

TEST_F(Chooser, MakesANewFolderAndNamesIt) {
  show(folder_.path());
  QSignalSpy loaded(&model(), &QFileSystemModel::directoryLoaded);
  while (!loaded.contains(QVariantList{folder_.path()})) ASSERT_TRUE(loaded.wait(5000));
  window_.make_folder();
  EXPECT_EQ(path(), folder_.filePath("New Folder"));
  auto* name = window_.tree()->findChild<QLineEdit*>();
  ASSERT_TRUE(name != nullptr);
  name->selectAll();
  QTest::keyClicks(name, "mine");
  QTest::keyClick(name, Qt::Key_Return);
  settle();
  EXPECT_TRUE(QDir(folder_.filePath("mine")).exists());
  EXPECT_EQ(path(), folder_.filePath("mine"));
  EXPECT_TRUE(form_.frmDir.shown());  // that Enter was for the name
}

}  // namespace
}  // namespace velmora::ui
