#include "ui/search_page.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/page_layout.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {

SearchPage::SearchPage(Form& form, FormBinding& bind, QWidget* parent) : QWidget(parent) {
  auto* column = new QVBoxLayout(this);
  QWidget* words = bind.line_edit(form.Tsearch);
  QWidget* caption = bind.caption_label(form.Tsearch);
  QWidget* start = bind.button(form.start_search);
  QWidget* stop = bind.check_box(form.stop_search);
  QWidget* clear = bind.button(form.clear_search);
  auto* search = in_line({caption, words, start, stop, clear});
  search->setStretchFactor(words, 1);
  column->addLayout(search);

  QWidget* numbers = bind.options(form.search_num);
  QWidget* filter = bind.check_box(form.filtersearch);
  QWidget* total = bind.label(form.totalsearch);
  column->addLayout(in_line({captioned(bind, form.search_num, numbers), filter, nullptr,
                             captioned(bind, form.totalsearch, total)}));

  ListTable* results = bind.list(form.lfound);
  results->set_activate_text(tr("Queue the download"));
  results->set_empty_hint(
      tr("No results. Connect to hosts on the page \"Hosts\", then type words above and press "
         "Enter."));
  column->addWidget(results, 1);
  setFocusProxy(words);
}

}  // namespace velmora::ui
