#include "ui/upload_page.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <initializer_list>

#include "ui/page_layout.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/slider_field.h"

namespace velmora::ui {

UploadPage::UploadPage(Form& form, FormBinding& bind, QWidget* parent) : QWidget(parent) {
  auto* column = new QVBoxLayout(this);
  ListTable* uploads = bind.list(form.lupload);
  uploads->set_activate_text(tr("Stop the upload"));
  for (Control* told :
       std::initializer_list<Control*>{&form.sharenum_config, &form.sharesize_config}) {
    bind.follow(*told, this, [uploads, &form] {
      const bool shares = form.sharenum_config.text() != "0" || form.sharesize_config.text() != "0";
      uploads->set_empty_hint(shares
                                  ? tr("Nobody fetches a file from you.")
                                  : tr("Nobody fetches a file from you. Share a folder on the page "
                                       "\"Configuration\", and press \"Scan\"."));
    });
  }
  column->addWidget(uploads, 1);

  auto* limits = form_rows();
  QWidget* speed = bind.slider(form.speed_upload);
  add_field(limits, bind, form.speed_upload, speed);
  QWidget* packet = bind.slider(form.pack_upload);
  add_field(limits, bind, form.pack_upload, packet);
  QWidget* most = narrow(bind.line_edit(form.max_in_upload), 6);
  add_field(limits, bind, form.max_in_upload, most);

  auto* farewell = new QVBoxLayout;
  QWidget* text = bind.text_edit(form.text_upload);
  text->setMinimumHeight(text->fontMetrics().lineSpacing() * 3);
  text->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
  farewell->addWidget(bind.caption_label(form.text_upload));
  farewell->addWidget(text, 1);

  auto* frames = new QHBoxLayout;
  frames->addWidget(framed(tr("Limits"), limits), 1);
  frames->addWidget(framed(tr("Stopping an upload"), farewell), 1);
  column->addLayout(frames);

  QWidget* log = bind.check_box(form.log_upload);
  QWidget* view_log = bind.button(form.view_log_upload);
  column->addLayout(in_line({log, view_log, nullptr}));
}

}  // namespace velmora::ui
