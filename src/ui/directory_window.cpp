#include "ui/directory_window.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileSystemModel>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStorageInfo>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>
#include <utility>

#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/text.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {
namespace {

constexpr int kMostPlaces = 50;

// The machine's own file systems hold nothing to share and nowhere to save.
bool is_for_people(const QStorageInfo& volume) {
  const QString root = volume.rootPath();
  for (const char* own : {"/proc", "/sys", "/dev", "/run/", "/boot", "/snap"}) {
    const bool removable = root.startsWith(QLatin1String("/run/media/"));
    if (root.startsWith(QLatin1String(own)) && !removable) return false;
  }
  return volume.isReady() && QFileInfo(root).isDir();
}

}  // namespace

DirectoryWindow::DirectoryWindow(FormBinding& binding, QWidget* parent)
    : FormWindow(binding, binding.form().frmDir, parent),
      form_(binding.form()),
      binding_(binding),
      places_(new QComboBox),
      tree_(new QTreeView),
      field_(binding.line_edit(form_.frmDir_path)),
      trouble_(new QLabel) {
  ValueLabel* caption = binding.label(form_.frmDir_caption);
  auto* fields = new QFormLayout;
  auto* places_label = new QLabel(tr("&Place"));
  places_label->setBuddy(places_);
  places_->setPlaceholderText(tr("Go to..."));
  places_->setAccessibleName(tr("Place"));
  fields->addRow(places_label, places_);
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  tree_->setAccessibleName(tr("Directories"));
  auto* path = new QFormLayout;
  path->addRow(binding.caption_label(form_.frmDir_path), field_);
  trouble_->setTextFormat(Qt::PlainText);
  trouble_->setWordWrap(true);
  QSizePolicy keeps_its_place = trouble_->sizePolicy();
  keeps_its_place.setRetainSizeWhenHidden(true);  // it comes and goes while a path is typed
  trouble_->setSizePolicy(keeps_its_place);
  trouble_->hide();

  auto* buttons = new QDialogButtonBox;
  auto* folder = buttons->addButton(tr("&New Folder"), QDialogButtonBox::ActionRole);
  folder->setAutoDefault(false);
  connect(folder, &QPushButton::clicked, this, &DirectoryWindow::make_folder);
  ok_ = binding.button(form_.frmDir_ok);
  buttons->addButton(ok_, QDialogButtonBox::ActionRole);
  ok_->setDefault(true);
  FormButton* cancel = binding.button(form_.frmDir_cancel);
  cancel->setAutoDefault(false);  // Enter is for the chosen folder, whatever was pressed before
  buttons->addButton(cancel, QDialogButtonBox::ActionRole);

  auto* column = new QVBoxLayout(this);
  column->addWidget(caption);
  column->addWidget(binding.label(form_.frmDir_mode));  // for the program; nobody sees it
  column->addLayout(fields);
  column->addWidget(tree_, 1);
  column->addLayout(path);
  column->addWidget(trouble_);
  column->addWidget(buttons);
  resize(fontMetrics().averageCharWidth() * 75, fontMetrics().lineSpacing() * 28);

  connect(places_, &QComboBox::activated, this,
          [this](int place) { go_to(places_->itemData(place).toString()); });
  on_show = [this] { prepare(); };
  binding.follow(form_.frmDir, this, [this] { start_somewhere(); });
  binding.follow(form_.frmDir_path, this, [this] { path_changed(); });
}

void DirectoryWindow::prepare() {
  trouble_->hide();
  ok_->setDefault(true);
  make_model();
  list_places();
}

// It may be open already, and now be wanted for the other purpose.
void DirectoryWindow::start_somewhere() {
  if (!form_.frmDir.shown()) return;
  if (form_.frmDir_path.text().empty()) {
    go_to(QDir::homePath());
  } else {
    path_changed();
  }
  field_->show_bytes(form_.frmDir_path.text());  // a path that is typed takes this one's place
  field_->setFocus();
  field_->selectAll();
}

void DirectoryWindow::list_places() {
  places_->clear();
  const auto add = [this](const QString& name, const QString& path) {
    const bool known = places_->findData(path) >= 0;
    if (!known && places_->count() < kMostPlaces) places_->addItem(name, path);
  };
  add(tr("Home"), QDir::homePath());
  add(tr("Computer"), QDir::rootPath());
  for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
    if (!is_for_people(volume)) continue;
    add(shown(QFile::encodeName(volume.rootPath()).toStdString()), volume.rootPath());
  }
}

void DirectoryWindow::make_model() {
  if (model_ != nullptr) return;
  model_ = new QFileSystemModel(this);
  model_->setFilter(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Drives);
  model_->setOption(QFileSystemModel::DontUseCustomDirectoryIcons);
  model_->setReadOnly(false);  // a new folder gets its name in place
  model_->setRootPath(QDir::rootPath());
  // A row that goes under the cursor moves the cursor; nobody chose that. Connected before the tree
  // is, so that this is known first.
  connect(model_, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { following_ = true; });
  connect(model_, &QAbstractItemModel::rowsRemoved, this, [this] { following_ = false; });
  tree_->setModel(model_);
  for (int column = 1; column < model_->columnCount(); ++column) tree_->hideColumn(column);
  connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          &DirectoryWindow::row_chosen);
  // Rows that come in above push the chosen one out of sight, and once more when they are sorted.
  connect(model_, &QFileSystemModel::directoryLoaded, this, [this](const QString& directory) {
    const QModelIndex chosen = tree_->currentIndex();
    if (chosen.isValid() && model_->filePath(chosen).startsWith(directory)) arriving_ = true;
  });
  connect(model_, &QAbstractItemModel::layoutChanged, this, [this] {
    if (!std::exchange(arriving_, false)) return;
    QTimer::singleShot(0, this, &DirectoryWindow::show_chosen);
  });
  connect(model_, &QFileSystemModel::fileRenamed, this,
          [this](const QString& in, const QString& from, const QString& to) {
            const QDir directory(in);
            if (directory.filePath(from) == path()) go_to(directory.filePath(to));
          });
}

QString DirectoryWindow::path() const {
  return QFile::decodeName(QByteArray::fromStdString(form_.frmDir_path.text()));
}

void DirectoryWindow::go_to(const QString& path) {
  binding_.apply([&] { form_.frmDir_path.set_text(QFile::encodeName(path).toStdString()); });
}

// The tree goes to the path where it is a directory; while one is typed it waits for the next.
void DirectoryWindow::path_changed() {
  if (model_ == nullptr || !form_.frmDir.shown()) return;
  const QString wanted = path();
  const bool is_there = QFileInfo(wanted).isDir();
  ok_->setEnabled(is_there);
  trouble_->setVisible(!is_there && !wanted.isEmpty());
  if (!is_there) trouble_->setText(tr("There is no such folder."));
  if (!is_there || !QDir::isAbsolutePath(wanted)) return;
  places_->setCurrentIndex(places_->findData(QDir::cleanPath(wanted)));
  const QModelIndex index = model_->index(wanted);
  if (!index.isValid() || index == tree_->currentIndex()) return;
  const QScopedValueRollback<bool> following(following_, true);
  tree_->setCurrentIndex(index);
  tree_->expand(index);
  centred_ = true;
  show_chosen();
}

void DirectoryWindow::row_chosen(const QModelIndex& index) {
  if (following_ || !index.isValid()) return;
  centred_ = false;
  go_to(model_->filePath(index));
}

// With what is above and below it.
void DirectoryWindow::show_chosen() {
  tree_->scrollTo(tree_->currentIndex(), centred_ ? QAbstractItemView::PositionAtCenter
                                                  : QAbstractItemView::EnsureVisible);
}

void DirectoryWindow::make_folder() {
  const QModelIndex parent = tree_->currentIndex();
  if (!parent.isValid()) return;
  const QString base = tr("New Folder");
  QString name = base;
  const QDir directory(model_->filePath(parent));
  for (int number = 2; directory.exists(name) && number < 1000; ++number) {
    name = QStringLiteral("%1 %2").arg(base).arg(number);
  }
  const QModelIndex made = model_->mkdir(parent, name);
  trouble_->setVisible(!made.isValid());
  if (!made.isValid()) {
    trouble_->setText(tr("No folder can be made in %1").arg(shown(form_.frmDir_path.text())));
    return;
  }
  tree_->expand(parent);
  tree_->setCurrentIndex(made);
  tree_->edit(made);
}

}  // namespace velmora::ui
