#include "ui/configuration_page.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "ui/page_layout.h"
#include "ui/svg_image.h"
#include "ui/widgets/combo_list_box.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/picture_box.h"
#include "ui/widgets/progress_line.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {
ConfigurationPage::ConfigurationPage(Form& form, FormBinding& bind, QWidget* parent)
    : QWidget(parent), form_(form), bind_(bind) {
  auto* frames = new QGridLayout(this);
  frames->addWidget(make_folders(), 0, 0, 1, 2);
  frames->addWidget(make_ports(), 1, 0);
  frames->addWidget(make_hosts(), 1, 1);
  frames->addWidget(make_behaviour(), 2, 0, 1, 2);
  frames->addWidget(make_colours(), 3, 0);
  frames->addWidget(make_about(), 3, 1);
  frames->setColumnStretch(0, 1);
  frames->setColumnStretch(1, 1);
  frames->setRowStretch(4, 1);
}

QWidget* ConfigurationPage::make_folders() {
  auto* rows = form_rows();
  QWidget* download = bind_.line_edit(form_.down_config);
  QWidget* browse_download = named_by_tooltip(bind_.button(form_.download_browse_config));
  auto* download_line = in_line({download, browse_download});
  download_line->setStretchFactor(download, 1);
  add_field(rows, bind_, form_.down_config, download_line);

  QWidget* shared = bind_.combo_list(form_.upload_config);
  QWidget* browse = named_by_tooltip(bind_.button(form_.upload_browse_config));
  QWidget* scan = bind_.button(form_.scan_config);
  auto* shared_line = in_line({shared, browse, scan});
  shared_line->setStretchFactor(shared, 1);
  for (QWidget* button : {browse, scan}) shared_line->setAlignment(button, Qt::AlignTop);
  add_field(rows, bind_, form_.upload_config, shared_line);

  QWidget* count = captioned(bind_, form_.sharenum_config, bind_.label(form_.sharenum_config));
  QWidget* size = captioned(bind_, form_.sharesize_config, bind_.label(form_.sharesize_config));
  QWidget* progress = bind_.progress(form_.scan_progress);
  auto* found = in_line({count, size, progress, nullptr});
  found->setSpacing(2 * fontMetrics().height());
  found->setStretchFactor(progress, 1);
  rows->addRow(found);
  return framed(tr("Downloads and sharing"), rows);
}

QWidget* ConfigurationPage::make_ports() {
  auto* rows = form_rows();
  for (TextField* field : {&form_.port_config, &form_.upport_config, &form_.query_config}) {
    QWidget* text = bind_.line_edit(*field);
    add_field(rows, bind_, *field, text);
  }
  QWidget* speed = bind_.line_edit(form_.speed_config);
  auto* speed_line = in_line({speed, small_button(bind_.button(form_.speed_help))});
  add_field(rows, bind_, form_.speed_config, speed_line);
  for (TextField* field : {&form_.ttlMax_config, &form_.forceIP_config}) {
    QWidget* text = bind_.line_edit(*field);
    add_field(rows, bind_, *field, text);
  }
  return framed(tr("Ports and limits"), rows);
}

QWidget* ConfigurationPage::make_hosts() {
  auto* rows = form_rows();
  QWidget* filter = bind_.combo_list(form_.cachefilter_config);
  add_field(rows, bind_, form_.cachefilter_config, filter);
  QWidget* total = bind_.label(form_.totalfilter_config);
  add_field(rows, bind_, form_.totalfilter_config, total);
  for (TextField* field : {&form_.cachemax_config, &form_.dns_ser}) {
    QWidget* text = bind_.line_edit(*field);
    add_field(rows, bind_, *field, text);
  }
  return framed(tr("Hosts and names"), rows);
}

QWidget* ConfigurationPage::make_colours() {
  auto* grid = new QGridLayout;
  const auto row = [&](int number, const QString& name, Button& back, Button* fore) {
    grid->addWidget(new QLabel(name), number, 0);
    int column = 0;
    for (Button* colour : {&back, fore}) {
      if (colour == nullptr) continue;
      QWidget* button = bind_.button(*colour);
      button->setAccessibleName(name + ' ' + button->accessibleName());
      grid->addWidget(button, number, ++column);
    }
  };
  row(0, tr("Form"), form_.form_b_sel, &form_.form_f_sel);
  row(1, tr("Button"), form_.but_b_sel, nullptr);
  row(2, tr("Listbox"), form_.list_b_sel, &form_.list_f_sel);
  grid->addWidget(small_button(bind_.button(form_.color_help)), 1, 2);
  grid->setColumnStretch(3, 1);
  return framed(tr("Colors"), grid);
}

QWidget* ConfigurationPage::make_behaviour() {
  constexpr int kColumns = 4;
  auto* column = new QVBoxLayout;
  column->addLayout(in_line({bind_.options(form_.behaviour), nullptr}));
  auto* grid = new QGridLayout;
  int number = 0;
  for (BehaviourBox& box : form_.behaviour_boxes) {
    grid->addWidget(bind_.check_box(box), number / kColumns, number % kColumns);
    ++number;
  }
  column->addLayout(grid);
  auto* rows = form_rows();
  QWidget* left_out = bind_.line_edit(form_.exclude_config);
  add_field(rows, bind_, form_.exclude_config, left_out);
  column->addLayout(rows);
  return framed(tr("Behaviour"), column);
}

QWidget* ConfigurationPage::make_about() {
  auto* column = new QVBoxLayout;
  QWidget* version = bind_.label(form_.version);
  column->addLayout(in_line({version, small_button(bind_.button(form_.ver_help)), nullptr}));
  QWidget* debug = bind_.label(form_.s_debug);
  column->addLayout(in_line({debug, nullptr}));
  column->addLayout(make_creatures());
  column->addStretch();
  return framed(tr("About"), column);
}

QLayout* ConfigurationPage::make_creatures() {
  const int size = fontMetrics().height() * 3;
  auto* line = new QHBoxLayout;
  int number = 0;
  for (Picture* picture : {&form_.mascot1, &form_.mascot2, &form_.mascot3}) {
    PictureBox* box = bind_.picture(*picture);
    box->set_picture(drawn_icon(QStringLiteral("mascot%1").arg(++number)), QSize(size, size));
    line->addWidget(box);
  }
  line->addWidget(bind_.label(form_.mascot_text));
  line->addStretch();
  return line;
}

}  // namespace velmora::ui
