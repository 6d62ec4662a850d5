#include "app/list_refresh.h"

#include <string>

#include "platform/number.h"

namespace velmora {
namespace {

constexpr int kDisplay_ms = 500;

void show(Label& label, double value) { label.set_text(decimal_text(value)); }

void show(Label& label, double in, double out) {
  label.set_text(decimal_text(in) + " / " + decimal_text(out));
}

}  // namespace

ListRefresh::ListRefresh(EventLoop& loop, Form& form, MessageConnections& connections,
                         const TrafficCounters& counters)
    : form_(form),
      connections_(connections),
      counters_(counters),
      display_(loop.make_timer(kDisplay_ms, [this] { refresh(); })) {}

void ListRefresh::start() { display_->set_enabled(true); }
void ListRefresh::stop() { display_->set_enabled(false); }

void ListRefresh::refresh() {
  connections_.recount();
  if (shown_ != counters_) show_counters();
  form_.lHosts.redraw();
  if (sample_is_due_) {
    history_.add(counters_, connections_.count_in(), connections_.count_out());
  }
  sample_is_due_ = !sample_is_due_;
  if (also) also();
}

void ListRefresh::show_counters() {
  const TrafficCounters& c = counters_;
  show(form_.net_stat, c.messages_received);
  show(form_.bytein_stat, c.bytes_received);
  show(form_.byteout_stat, c.bytes_sent);
  show(form_.drop_stat, c.dropped);
  show(form_.route_stat, c.route_errors);
  show(form_.ping_stat, c.pings_in, c.pings_out);
  show(form_.myping_stat, c.my_pings_in, c.my_pings_out);
  show(form_.pong_stat, c.pongs_in, c.pongs_out);
  show(form_.mypong_stat, c.my_pongs_in, c.my_pongs_out);
  show(form_.search_stat, c.queries_in, c.queries_out);
  show(form_.reply_stat, c.query_hits_in, c.query_hits_out);
  show(form_.push_stat, c.pushes_in, c.pushes_out);
  show(form_.unknown_stat, c.unknown);
  shown_ = c;
}

}  // namespace velmora
