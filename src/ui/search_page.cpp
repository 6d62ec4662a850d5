#include "ui/search_page.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <initializer_list>

#include "net/traffic_counters.h"
#include "ui/page_layout.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {

SearchPage::SearchPage(Servent& servent, FormBinding& bind, QWidget* parent)
    : QWidget(parent), servent_(servent), results_(bind.list(servent.form().lfound)) {
  Form& form = servent_.form();
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

  results_->set_activate_text(tr("Queue the download"));
  results_->on_activate = [this](const auto& queue) { queue_and_tell(queue); };
  column->addWidget(results_, 1);
  setFocusProxy(words);
  follow_form(bind);
}

void SearchPage::follow_form(FormBinding& bind) {
  Form& form = servent_.form();
  for (Control* control : std::initializer_list<Control*>{&form.lHosts, &form.StatusBar}) {
    bind.follow(*control, this, [this] { results_->set_empty_hint(empty_hint()); });
  }
  bind.follow(form.totalsearch, this, [this, &form] {
    if (form.totalsearch.text() == "0") sent_before_ = servent_.parts().counters.queries_sent;
    results_->set_empty_hint(empty_hint());
  });
}

bool SearchPage::starts_by_itself() const {
  for (std::size_t i = 0; i < kBehaviourSwitches.size(); ++i) {
    if (kBehaviourSwitches.at(i).flag != &Behaviour::whole_files) continue;
    return servent_.form().behaviour_boxes.at(i).checked();
  }
  return false;
}

// The program itself says nothing when it takes a result into the list.
void SearchPage::queue_and_tell(const std::function<void()>& queue) {
  Form& form = servent_.form();
  const std::uint64_t said = form.StatusBar.times_said();
  const std::uint64_t list_before = form.ldown.version();
  queue();
  if (form.StatusBar.times_said() != said || form.ldown.version() == list_before) return;
  const QString note = starts_by_itself()
                           ? tr("Queued.")
                           : tr("Queued. \"Resume\" on the page \"Download\" starts it.");
  form.StatusBar.set_note(note.toStdString());
}

QString SearchPage::empty_hint() const {
  const TrafficSample now = servent_.traffic_history().newest();
  if (now.connections_in + now.connections_out == 0) {
    return tr(
        "Not connected to any host. Connect to one on the page \"Hosts\", then type words "
        "above and press Enter.");
  }
  if (servent_.parts().counters.queries_sent == sent_before_) {
    return tr("Type words above and press Enter: the connected hosts are searched.");
  }
  return tr(
      "No results so far. A file is found when its name has all of the words, and answers can take "
      "some seconds. Fewer words or more connections may find more.");
}

}  // namespace velmora::ui
