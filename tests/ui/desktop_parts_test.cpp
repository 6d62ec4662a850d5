// The desktop around the engine: message boxes, tray icon, the opener for text files, and the way
// to a servent that runs already.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QUrl>

#include "desktop/application.h"
#include "desktop/running_servent.h"
#include "platform/error.h"
#include "ui/qt_message_boxes.h"
#include "ui/qt_programs.h"
#include "ui/qt_tray.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

QList<QMessageBox*> visible_boxes() {
  QList<QMessageBox*> boxes;
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    auto* box = qobject_cast<QMessageBox*>(widget);
    if (box != nullptr && box->isVisible()) boxes.append(box);
  }
  return boxes;
}

void let_deletions_happen() {
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
}

TEST(QtMessageBoxes, ShowsEachTextOncePlainAndBounded) {
  QtMessageBoxes boxes;
  boxes.show(BoxIcon::information, "?", "<b>bold</b> \xE2\x80\xAE name");
  boxes.show(BoxIcon::information, "?", "<b>bold</b> \xE2\x80\xAE name");
  ASSERT_EQ(visible_boxes().size(), 1);
  QMessageBox* box = visible_boxes().first();
  EXPECT_EQ(box->textFormat(), Qt::PlainText);
  EXPECT_TRUE(box->text().startsWith("<b>bold</b> "));
  EXPECT_FALSE(box->text().contains(QChar(0x202E)));
  boxes.show(BoxIcon::critical, "?", "<b>bold</b>");
  EXPECT_EQ(boxes.open_count(), 2U);
  for (int i = 0; i < 30; ++i) boxes.show(BoxIcon::information, "?", std::to_string(i));
  EXPECT_EQ(boxes.open_count(), 20U);
  boxes.keep_only_critical();
  ASSERT_EQ(visible_boxes().size(), 1);
  int last = 0;
  boxes.on_last_closed = [&] { ++last; };
  visible_boxes().first()->button(QMessageBox::Ok)->click();
  let_deletions_happen();
  EXPECT_EQ(last, 1);
  EXPECT_EQ(boxes.open_count(), 0U);
  boxes.show(BoxIcon::information, "?", "0");  // once closed it may come again
  EXPECT_EQ(boxes.open_count(), 1U);
}

TEST(QtMessageBoxes, TakesEverythingButYesForNo) {
  const std::vector<std::pair<std::function<void(QMessageBox&)>, bool>> table = {
      {[](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); }, true},
      {[](QMessageBox& box) { box.button(QMessageBox::No)->click(); }, false},
      {[](QMessageBox& box) { box.close(); }, false},
      {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }, false},
      {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Enter); }, false},
  };
  for (std::size_t i = 0; i < table.size(); ++i) {
    QtMessageBoxes boxes;
    std::vector<bool> answers;
    const auto note = [&](bool yes) { answers.push_back(yes); };
    boxes.ask("Clear Cache", "Sure?", note);
    ASSERT_EQ(visible_boxes().size(), 1) << i;
    const QPointer<QMessageBox> box = visible_boxes().first();
    table[i].first(*box);
    let_deletions_happen();
    EXPECT_TRUE(box.isNull()) << i;
    EXPECT_EQ(answers, std::vector<bool>{table[i].second}) << i;
  }
}

TEST(QtMessageBoxes, AnswersAQuestionThatIsOpenAlreadyWithNo) {
  std::vector<bool> answers;
  {
    QtMessageBoxes boxes;
    boxes.ask("Clear Cache", "Sure?", [&](bool) { ADD_FAILURE() << "nobody answered"; });
    boxes.ask("Clear Cache", "Sure?", [&](bool yes) { answers.push_back(yes); });
    EXPECT_EQ(visible_boxes().size(), 1);
  }
  EXPECT_EQ(answers, std::vector<bool>{false});
  EXPECT_TRUE(visible_boxes().isEmpty());
}

TEST(QtMessageBoxes, BelongToTheWindowOnceThereIsOne) {
  QtMessageBoxes boxes;
  boxes.show(BoxIcon::information, "Oops", "early");
  auto window = std::make_unique<QWidget>();
  boxes.set_parent_window(window.get());
  boxes.show(BoxIcon::information, "Oops", "late");
  ASSERT_EQ(visible_boxes().size(), 2);
  for (const QMessageBox* box : visible_boxes()) EXPECT_EQ(box->parentWidget(), window.get());
  window.reset();
  EXPECT_EQ(boxes.open_count(), 0U);
  boxes.show(BoxIcon::information, "Oops", "without a window again");
  EXPECT_EQ(visible_boxes().size(), 1);
}

TEST(QtTray, HandsClicksToTheFormAndPopsUpItsMenu) {
  Form form;
  QPixmap dot(16, 16);
  dot.fill(Qt::red);
  QtTray tray{QIcon(dot)};
  tray.attach(form);
  std::vector<int> messages;
  form.chkMsg.on_mouse_move = [&](int x) { messages.push_back(x); };
  for (const auto reason : {QSystemTrayIcon::Trigger, QSystemTrayIcon::Context,
                            QSystemTrayIcon::DoubleClick, QSystemTrayIcon::MiddleClick}) {
    emit tray.icon().activated(reason);
  }
  EXPECT_EQ(messages, (std::vector<int>{513, 516}));

  form.mnuFile.click();
  EXPECT_TRUE(tray.menu().isVisible());
  EXPECT_EQ(tray.menu().menuAction()->objectName(), "mnuFile");
  std::vector<std::string> clicked;
  form.mnushow.on_click = [&] { clicked.emplace_back("show"); };
  form.mnuexit.on_click = [&] { clicked.emplace_back("exit"); };
  ASSERT_NE(tray.menu().defaultAction(), nullptr);
  EXPECT_EQ(tray.menu().defaultAction()->objectName(), "mnushow");
  QTest::keyClick(&tray.menu(), Qt::Key_Down);
  QTest::keyClick(&tray.menu(), Qt::Key_Down);
  QTest::keyClick(&tray.menu(), Qt::Key_Return);
  EXPECT_EQ(clicked, std::vector<std::string>{"exit"});
  EXPECT_FALSE(tray.menu().isVisible());
  tray.menu().defaultAction()->trigger();
  EXPECT_EQ(clicked.back(), "show");

  tray.add("Velmora");
  EXPECT_EQ(tray.icon().toolTip(), "Velmora");
  EXPECT_TRUE(tray.icon().isVisible());
  tray.remove();
  EXPECT_FALSE(tray.icon().isVisible());
}

TEST(QtPrograms, OpensFilesOfTheProfileOrSaysWhyNot) {
  const QTemporaryDir profile;
  QtPrograms programs(profile.path());
  const auto code = [&](const std::string& name) {
    try {
      programs.open_text_file(name);
    } catch (const PlatformError& error) {
      return error.code();
    }
    return Errc::overflow;  // no error
  };
  EXPECT_EQ(code("a log#1.txt"), Errc::path_not_found);
  QFile file(profile.filePath("a log#1.txt"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  EXPECT_EQ(code("a log#1.txt"), Errc::system);  // this desktop has no opener
  QTextBrowser editor;
  QDesktopServices::setUrlHandler("file", &editor, "setSource");
  EXPECT_EQ(code("a log#1.txt"), Errc::overflow);
  QDesktopServices::unsetUrlHandler("file");
  EXPECT_EQ(editor.source().toLocalFile(), file.fileName());
}

// Whether nobody listens, somebody answers, hangs up, or says nothing: it goes on, once.
TEST(RunningServent, IsAskedToShowItsWindowAndNeverWaitedForLong) {
  struct Case {
    bool listens;
    std::function<void(QLocalSocket&)> reaction;
  };
  const std::vector<Case> table = {
      {false, [](QLocalSocket&) {}},
      {true, [](QLocalSocket& client) { client.write("{\"id\":1}\n"); }},
      {true, [](QLocalSocket& client) { client.abort(); }},
      {true, [](QLocalSocket&) {}},
  };
  for (std::size_t i = 0; i < table.size(); ++i) {
    const QTemporaryDir profile;
    QLocalServer server;
    QByteArray line;
    if (table[i].listens) {
      ASSERT_TRUE(server.listen(profile.filePath("control.sock")));
    }
    QObject::connect(&server, &QLocalServer::newConnection, [&] {
      QLocalSocket* client = server.nextPendingConnection();
      QObject::connect(client, &QLocalSocket::readyRead, client, [&, client] {
        line += client->readAll();
        table[i].reaction(*client);
      });
    });
    const bool answers = i == 1 || i == 2;
    desktop::RunningServent other(profile.path(), answers ? 20'000 : 50);
    int times = 0;
    other.raise_window([&] { ++times; });
    EXPECT_EQ(times, table[i].listens ? 0 : 1) << i;
    ASSERT_TRUE(QTest::qWaitFor([&] { return times > 0; }, 10'000)) << i;
    QCoreApplication::processEvents();
    EXPECT_EQ(times, 1) << i;
    EXPECT_EQ(line.contains("\"mnushow\""), table[i].listens) << i;
  }
}

TEST(Translation, IsFoundInADataFolderByTheDesktopsLanguage) {
  // Of the context "form": "Resume" is "Weiter".
  const auto compiled = QByteArray::fromBase64(
      "PLhkGMrvnJXNIRy/YKG93acAAAACZGVCAAAACAWMrDUAAAAAaQAAACsDAAAADABXAGUAaQB0AGUAcggAAAAABgAAAAZS"
      "ZXN1bWUHAAAABGZvcm0BiAAAAAIBAQ==");
  const QTemporaryDir data;
  const QByteArray before = qgetenv("XDG_DATA_HOME");
  qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
  EXPECT_EQ(desktop::translation_into("de-AT"), nullptr);
  ASSERT_TRUE(QDir(data.path()).mkpath("velmora/translations"));
  const auto save = [&](const char* name, const QByteArray& bytes) {
    QFile file(data.filePath("velmora/translations/") + name);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
  };
  ASSERT_TRUE(save("velmora_de.qm", compiled));
  ASSERT_TRUE(save("velmora_fr.qm", compiled.mid(1)));
  EXPECT_EQ(desktop::translation_into("fr"), nullptr);
  EXPECT_EQ(desktop::translation_into(""), nullptr);
  const auto translation = desktop::translation_into("de-AT");
  before.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", before);
  ASSERT_NE(translation, nullptr);
  QCoreApplication::installTranslator(translation.get());
  EXPECT_EQ(form_text("Resume"), "Weiter");
  EXPECT_EQ(form_text("Pause"), "Pause");
}

}  // namespace
}  // namespace velmora::ui
