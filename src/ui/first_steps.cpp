#include "ui/first_steps.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QStyle>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "ui/widgets/form_binding.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

const char* const kClosedKey = "first_steps/closed";
const char* const kConnectedKey = "first_steps/connected";
const char* const kStatusColumn = "Stat";
const char* const kFreed = "Sock freed";
constexpr int kLongestAddress = 64;

}  // namespace

FirstSteps::FirstSteps(FormBinding& bind, QSettings& settings, std::function<bool()> is_connected,
                       QWidget* parent)
    : QFrame(parent),
      form_(bind.form()),
      bind_(bind),
      settings_(settings),
      is_connected_(std::move(is_connected)),
      closed_(settings.value(kClosedKey, false).toBool()),
      connected_(settings.value(kConnectedKey, false).toBool()),
      layout_(new QVBoxLayout(this)) {
  setFrameShape(QFrame::StyledPanel);
  setAccessibleName(tr("First steps"));
  layout_->setSpacing(layout_->spacing() / 2);
  make_heading();
  make_steps();
  follow_form();
}

void FirstSteps::make_heading() {
  auto* line = new QHBoxLayout;
  auto* heading = new QLabel(tr("First steps"));
  QFont bold = heading->font();
  bold.setBold(true);
  heading->setFont(bold);
  auto* close = new QToolButton;
  close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
  close->setAutoRaise(true);
  close->setFocusPolicy(Qt::StrongFocus);
  close->setToolTip(tr("Do not show this again"));
  close->setAccessibleName(tr("Do not show the first steps again"));
  connect(close, &QToolButton::clicked, this, [this] { close_for_good(); });
  line->addWidget(heading);
  line->addStretch();
  line->addWidget(close);
  layout_->addLayout(line);
}

void FirstSteps::make_steps() {
  download_ = step_button(tr("Browse for the folder of downloads"),
                          [this] { form_.download_browse_config.click(); });
  download_step_ = add_step(tr("Choose the folder that downloads go to."), {download_});

  share_ = step_button(tr("Browse for a folder to share"), [this] { share(); });
  share_step_ =
      add_step(tr("Choose a folder to share; its files can then be found by others."), {share_});

  host_ = new QLineEdit;
  host_->setPlaceholderText(tr("address:port"));
  host_->setAccessibleName(tr("Address of a first host"));
  host_->setMaxLength(kLongestAddress);
  connect(host_, &QLineEdit::returnPressed, this, [this] { connect_to_host(); });
  auto* connect_button = new QPushButton(tr("Connect"));
  connect(connect_button, &QPushButton::clicked, this, [this] { connect_to_host(); });
  outcome_ = new QLabel;
  outcome_->setTextFormat(Qt::PlainText);
  outcome_->setAccessibleName(tr("What became of the connection"));
  host_step_ = add_step(
      tr("Connect to a first host, then search. Without traffic it is dropped after 25 seconds."),
      {outcome_, host_, connect_button});
  outcome_->hide();
}

QPushButton* FirstSteps::step_button(const QString& accessible_name, std::function<void()> verb) {
  auto* button = new QPushButton(tr("Browse..."));
  button->setAccessibleName(accessible_name);
  connect(button, &QPushButton::clicked, this,
          [this, verb = std::move(verb)] { bind_.press(verb); });
  return button;
}

FirstSteps::Step FirstSteps::add_step(const QString& text, const QList<QWidget*>& means) {
  Step step{new QLabel};
  step.tick->setFixedWidth(2 * fontMetrics().averageCharWidth());
  auto* label = new QLabel(text);
  label->setWordWrap(true);
  auto* line = new QHBoxLayout;
  line->addWidget(step.tick);
  line->addWidget(label, 1);
  for (QWidget* widget : means) line->addWidget(widget);
  layout_->addLayout(line);
  show_done(step, false);
  return step;
}

void FirstSteps::show_done(Step& step, bool done) {
  step.done = done;
  step.tick->setText(done ? QStringLiteral("\u2713") : QString());
  step.tick->setAccessibleName(done ? tr("Done") : tr("To do"));
}

// A folder that is there and was not scanned wants no second one.
void FirstSteps::share() {
  const std::size_t folders = form_.upload_config.items().size();
  if (folders > 0 && !share_step_.done) {
    form_.scan_config.click();
  } else {
    folders_before_ = folders;
    form_.upload_browse_config.click();
  }
}

void FirstSteps::scan_what_was_chosen() {
  if (!folders_before_ || form_.frmDir.shown()) return;
  const std::size_t before = *std::exchange(folders_before_, std::nullopt);
  if (form_.upload_config.items().size() > before) {
    bind_.press([this] { form_.scan_config.click(); });
  }
}

void FirstSteps::follow_form() {
  for (Control* control : std::initializer_list<Control*>{
           &form_.down_config, &form_.upload_config, &form_.sharenum_config,
           &form_.sharesize_config, &form_.lcache, &form_.lHosts}) {
    bind_.follow(*control, this, [this] { show_what_is_missing(); });
  }
  bind_.follow(form_.frmDir, this, [this] { scan_what_was_chosen(); });
  // The button changes when a scan begins. Following it starts with a call that tells of no change.
  bind_.follow(form_.scan_config, this, [this, following = false]() mutable {
    scanned_ = following;
    following = true;
    show_what_is_missing();
  });
}

void FirstSteps::show_what_is_missing() {
  const bool no_share = form_.upload_config.items().empty();
  // The number of files is counted by a scan alone; their size is known from the last session.
  const bool no_scan = !no_share && !scanned_ && form_.sharenum_config.text() == "0" &&
                       form_.sharesize_config.text() == "0";
  const bool no_download = form_.down_config.text().empty();
  // A strip that came back with every lost connection would move the page under the mouse.
  if (!connected_ && is_connected_()) {
    connected_ = true;
    settings_.setValue(kConnectedKey, true);
  }
  const bool no_host = form_.lcache.rows() == 0 && !connected_;
  show_done(download_step_, !no_download);
  show_done(share_step_, !no_share && !no_scan);
  show_done(host_step_, !no_host);
  share_->setText(no_scan ? tr("Scan") : tr("Browse..."));
  share_->setAccessibleName(no_scan ? tr("Scan the shared folders")
                                    : tr("Browse for a folder to share"));
  show_outcome();
  setVisible(!closed_ && (no_download || no_share || no_scan || no_host));
}

// The list of connections is on another page.
void FirstSteps::show_outcome() {
  const std::vector<std::string>& columns = form_.lHosts.columns();
  const auto status = std::find(columns.begin(), columns.end(), kStatusColumn);
  if (tried_.empty() || status == columns.end()) return;
  const auto column = static_cast<std::size_t>(status - columns.begin()) + 1;
  for (std::size_t row = 1; row <= form_.lHosts.rows(); ++row) {
    const std::string host = form_.lHosts.cell(row, 1);
    if (host != tried_ && !host.starts_with(tried_ + ":")) continue;
    const std::string said = form_.lHosts.cell(row, column);
    if (said == kFreed) return;  // which tells less than what was said before
    outcome_->setText(form_text(said));
    outcome_->show();
    return;
  }
}

void FirstSteps::close_for_good() {
  closed_ = true;
  settings_.setValue(kClosedKey, true);
  show_what_is_missing();
}

void FirstSteps::connect_to_host() {
  const std::string address = host_->text().trimmed().toStdString();
  if (address.empty()) {
    host_->setFocus();
  } else {
    tried_ = address;
    outcome_->hide();
    bind_.press([this, address] { form_.new_host.enter(address); });
  }
}

}  // namespace velmora::ui
