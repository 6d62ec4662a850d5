#include "ui/main_window.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "ui/appearance.h"
#include "ui/configuration_page.h"
#include "ui/download_page.h"
#include "ui/first_steps.h"
#include "ui/hosts_page.h"
#include "ui/mnemonics.h"
#include "ui/page_images.h"
#include "ui/search_page.h"
#include "ui/small_windows.h"
#include "ui/stats_page.h"
#include "ui/svg_image.h"
#include "ui/upload_page.h"
#include "ui/view_page.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/panel_bar.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

const char* const kGeometryKey = "window/geometry";
constexpr QSize kFirstSize(960, 680);
constexpr QSize kSmallestSize(760, 560);

int running_rows(const ListView& list) {
  int count = 0;
  for (std::size_t row = 1; row <= list.rows(); ++row) {
    const auto progress = list.progress(row);
    if (progress && progress->running) ++count;
  }
  return count;
}

}  // namespace

MainWindow::MainWindow(Servent& servent, MainWindowOptions options)
    : servent_(servent),
      form_(servent.form()),
      options_(std::move(options)),
      settings_(options_.profile_folder + QStringLiteral("/window.ini"), QSettings::IniFormat),
      bind_(new FormBinding(form_, this)),
      pages_(new QStackedWidget) {
  setObjectName(QString::fromStdString(form_.frmMain.name()));
  setWindowTitle(form_text(form_.frmMain.caption()));
  setWindowIcon(program_icon());
  setMinimumSize(on_screen(kSmallestSize));

  setCentralWidget(make_content());
  setStatusBar(bind_->status_bar(form_.StatusBar));
  // The notification area's messages come in through it; nobody sees it.
  QWidget* messages = bind_->check_box(form_.chkMsg);
  messages->setParent(this);
  messages->hide();

  new SmallWindows(*bind_, *this);
  new Appearance(*bind_, *this);
  restore_geometry();
  follow_form();
}

// The widgets use the settings and the binding to their end.
MainWindow::~MainWindow() {
  save_geometry();
  delete takeCentralWidget();
}

QWidget* MainWindow::page(Page page) const {
  return qobject_cast<QScrollArea*>(pages_->widget(static_cast<int>(page)))->widget();
}

QWidget* MainWindow::make_content() {
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->addWidget(make_page_buttons());
  const auto is_connected = [this] {
    const TrafficSample now = servent_.traffic_history().newest();
    return now.connections_in + now.connections_out > 0;
  };
  first_steps_ = new FirstSteps(*bind_, settings_, is_connected, content);
  column->addWidget(first_steps_);
  column->addWidget(pages_, 1);
  make_pages();
  return content;
}

QWidget* MainWindow::make_page_buttons() {
  PageButtons* row = bind_->page_buttons(form_.pgbut);
  QList<QAbstractButton*> buttons;
  for (int number = form_.pgbut.first(); number <= form_.pgbut.last(); ++number) {
    QToolButton* button = row->button(number);
    button->setIconSize(QSize(32, 32));
    button->setFocusPolicy(Qt::TabFocus);
    const QKeySequence keys(Qt::ALT | static_cast<Qt::Key>(Qt::Key_1 + buttons.size()));
    auto* shortcut = new QShortcut(keys, this);
    connect(shortcut, &QShortcut::activated, this,
            [this, number] { bind_->press([this, number] { form_.pgbut.choose(number); }); });
    button->setToolTip(tr("%1 (%2)").arg(button->text(), keys.toString(QKeySequence::NativeText)));
    buttons.append(button);
  }
  set_built_in_images(buttons);
  load_button_images(options_.profile_folder, buttons);
  return row;
}

// In the order of the page buttons.
void MainWindow::make_pages() {
  add_page(new StatsPage(form_, *bind_, servent_.traffic_history()));
  add_page(new ViewPage(form_, *bind_));
  add_page(new UploadPage(form_, *bind_));
  add_page(new DownloadPage(form_, *bind_));
  add_page(new SearchPage(servent_, *bind_));
  add_page(new ConfigurationPage(form_, *bind_));
  add_page(new HostsPage(form_, *bind_));
  for (ListTable* table : pages_->findChildren<ListTable*>()) table->remember_in(&settings_);
}

// A page scrolls where the window, or the screen for the chosen size of letters, is too small.
void MainWindow::add_page(QWidget* page) {
  assign_mnemonics(*page);
  auto* scrolled = new QScrollArea;
  scrolled->setFrameShape(QFrame::NoFrame);
  scrolled->setFocusPolicy(Qt::NoFocus);
  scrolled->setWidgetResizable(true);
  scrolled->setWidget(page);
  pages_->addWidget(scrolled);
}

void MainWindow::follow_form() {
  bind_->follow(form_.pgbut, this, [this] { show_page(); });
  for (ListView* list : {&form_.lHosts, &form_.ldown, &form_.lupload}) {
    bind_->follow(*list, this, [this] { show_status(); });
  }
  // Whoever made the window shows it for the first time.
  bind_->follow(form_.frmMain, this, [this, following = false]() mutable {
    if (following) show_or_hide();
    following = true;
  });
}

void MainWindow::show_page() {
  const int number = form_.pgbut.chosen() - form_.pgbut.first();
  if (number == pages_->currentIndex()) return;
  pages_->setCurrentIndex(number);
  QWidget* shown_page = page(static_cast<Page>(number));
  if (shown_page->focusProxy() != nullptr) shown_page->setFocus();
}

void MainWindow::show_or_hide() {
  if (!form_.frmMain.shown()) {
    save_geometry();
    hide();
    return;
  }
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::show_status() {
  const TrafficSample now = servent_.traffic_history().newest();
  form_.StatusBar.set_panel(2, tr("Connections: %1 in, %2 out")
                                   .arg(now.connections_in)
                                   .arg(now.connections_out)
                                   .toStdString());
  form_.StatusBar.set_panel(3, tr("Transfers: %1 down, %2 up")
                                   .arg(running_rows(form_.ldown))
                                   .arg(running_rows(form_.lupload))
                                   .toStdString());
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  save_geometry();
  if (options_.tray_present && options_.tray_present()) {
    form_.frmMain.hide();
  } else {
    showMinimized();
  }
}

// A small screen with large letters may have less room than that.
QSize MainWindow::on_screen(QSize wanted) const {
  return wanted.boundedTo(screen()->availableSize());
}

void MainWindow::restore_geometry() {
  if (!restoreGeometry(settings_.value(kGeometryKey).toByteArray())) resize(on_screen(kFirstSize));
}

void MainWindow::save_geometry() { settings_.setValue(kGeometryKey, saveGeometry()); }

}  // namespace velmora::ui
