#include "ui/download_page.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/page_layout.h"
#include "ui/svg_image.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"

namespace velmora::ui {

DownloadPage::DownloadPage(Form& form, FormBinding& bind, QWidget* parent) : QWidget(parent) {
  auto* column = new QVBoxLayout(this);
  auto* resume = bind.button(form.resume_down);
  resume->setIcon(drawn_icon(QStringLiteral("resume"), resume));
  QFont bold = resume->font();
  bold.setBold(true);
  resume->setFont(bold);

  QWidget* pause = bind.button(form.pause_down);
  QWidget* remove = bind.button(form.delete_down);
  QWidget* up = bind.button(form.upque_down);
  QWidget* down = bind.button(form.downque_down);
  column->addLayout(in_line({resume, pause, remove, up, down, nullptr}));

  ListTable* downloads = bind.list(form.ldown);
  downloads->set_empty_hint(
      tr("No downloads. Double-click a result on the page \"Search\" to queue it here."));
  column->addWidget(downloads, 1);

  QWidget* clear = bind.check_box(form.clear_down);
  QWidget* most = narrow(bind.line_edit(form.max_down), 6);
  column->addLayout(in_line({clear, nullptr, captioned(bind, form.max_down, most)}));
}

}  // namespace velmora::ui
