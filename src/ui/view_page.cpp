#include "ui/view_page.h"

#include <QCheckBox>
#include <QVBoxLayout>

#include "ui/page_layout.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/list_table.h"

namespace velmora::ui {

ViewPage::ViewPage(Form& form, FormBinding& bind, QWidget* parent) : QWidget(parent) {
  auto* column = new QVBoxLayout(this);
  QWidget* traffic = bind.check_box(form.traffic_view);
  ListTable* queries = bind.list(form.lview);
  queries->set_empty_hint(
      tr("No query has passed by. Connect to a host on the page \"Hosts\", and keep \"View "
         "traffic\" ticked."));
  column->addLayout(in_line({traffic, nullptr}));
  column->addWidget(queries, 1);
}

}  // namespace velmora::ui
