#include "ui/hosts_page.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QSplitter>
#include <QVBoxLayout>

#include "ui/page_layout.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/progress_line.h"
#include "ui/widgets/text.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {

HostsPage::HostsPage(Form& form, FormBinding& bind, QWidget* parent) : QWidget(parent) {
  auto* halves = new QSplitter(Qt::Vertical);
  halves->setChildrenCollapsible(false);
  halves->addWidget(make_connections(form, bind));
  halves->addWidget(make_known_hosts(form, bind));
  halves->setStretchFactor(0, 2);
  halves->setStretchFactor(1, 3);
  auto* column = new QVBoxLayout(this);
  column->addWidget(halves);
}

QWidget* HostsPage::make_connections(Form& form, FormBinding& bind) {
  QWidget* host = bind.line_edit(form.new_host);
  QWidget* caption = bind.caption_label(form.new_host);
  QWidget* connect_auto = bind.button(form.connect_auto);
  QWidget* by_dns = bind.check_box(form.connect_dns);
  QWidget* most_out =
      captioned(bind, form.max_out_host, narrow(bind.line_edit(form.max_out_host), 4));
  QWidget* most_in = captioned(bind, form.max_in_host, narrow(bind.line_edit(form.max_in_host), 4));
  QWidget* help = small_button(bind.button(form.help_hosts));
  auto* line = in_line({caption, host, connect_auto, by_dns, most_out, most_in, help});
  line->setStretchFactor(host, 1);

  ListTable* connections = bind.list(form.lHosts);
  connections->set_activate_text(tr("Disconnect"));
  connections->set_empty_hint(
      tr("No connection. Type a host's address above and press Enter, or press \"Connect\" to try "
         "known hosts."));
  auto* content = new QVBoxLayout;
  content->addLayout(line);
  content->addWidget(connections, 1);
  return framed(form_text(form.lHosts.caption()), content);
}

QWidget* HostsPage::make_known_hosts(Form& form, FormBinding& bind) {
  ListTable* known = bind.list(form.lcache);
  known->set_activate_text(tr("Connect"));
  known->set_empty_hint(tr(
      "No known hosts. Connect to one above, then press \"More\": hosts that answer appear here, "
      "unless the filter on the page \"Configuration\" keeps them out."));
  QWidget* more = bind.button(form.more_cache);
  QWidget* remove = bind.button(form.remove_cache);
  QWidget* clear = bind.button(form.clear_cache);
  QWidget* show_names = bind.check_box(form.show_dns);
  QWidget* start = bind.button(form.StartDNS);
  QWidget* stop = bind.button(form.stopDNS);
  QWidget* status = captioned(bind, form.dnsStat, bind.label(form.dnsStat));
  QWidget* progress = bind.progress(form.dns_progress);

  auto* content = new QVBoxLayout;
  content->addWidget(known, 1);
  content->addLayout(in_line({more, remove, clear, nullptr, show_names, start, stop}));
  auto* names = in_line({status, progress, nullptr});
  names->setStretchFactor(progress, 1);
  content->addLayout(names);
  return framed(form_text(form.lcache.caption()), content);
}

}  // namespace velmora::ui
