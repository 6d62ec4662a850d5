#include "app/servent.h"

#include "app/control_socket.h"
#include "app/control_verbs.h"
#include "app/form_debug_log.h"
#include "app/list_refresh.h"
#include "app/listeners.h"
#include "app/picture_game.h"
#include "app/program_answers.h"
#include "app/settings.h"
#include "app/settings_store.h"
#include "app/small_window_commands.h"
#include "net/host_discovery.h"
#include "net/host_list.h"
#include "net/message_connections.h"
#include "net/originator.h"
#include "net/router.h"
#include "platform/trap.h"
#include "protocol/conversions.h"
#include "protocol/framing.h"
#include "share/query_answering.h"
#include "share/shared_index.h"
#include "share/shared_scan.h"
#include "share/upload_server.h"
#include "transfer/download_client.h"
#include "transfer/download_list.h"
#include "transfer/download_queue.h"
#include "transfer/search_commands.h"
#include "transfer/search_results.h"
#include "transfer/search_slots.h"

namespace velmora {

// The members stand in the order in which they need each other.
struct Servent::Parts {
  Parts(Platform machine, ServentOptions wishes)
      : platform(machine),
        options(std::move(wishes)),
        store(platform.files, options.settings_path),
        control(form, platform.loop, platform.control, [this] { end_program(); }) {
    log.echo = options.echo_log;
    connections.deliver_to(framing);
    refresh.also = [this] {
      uploads.refresh();
      downloads.redraw();
    };
    form.mnushow.on_click = [this] { form.frmMain.show(); };
    form.mnuexit.on_click = [this] { end_program(); };
  }

  void end_program() {
    if (request_exit) request_exit();
  }

  Platform platform;
  ServentOptions options;
  std::function<void()> request_exit;
  bool running = false;
  std::shared_ptr<bool> alive = std::make_shared<bool>(true);
  std::unique_ptr<ProfileLock> lock;

  Form form;
  FormDebugLog log{form.frmDebug};
  SettingsStore store;
  FilterArray cache_filter;
  TrafficCounters counters;
  RoutingTable routes;

  NoHostCache host_cache;
  SearchSlots search_slots{form};
  SharedIndex shared_index;
  MessageConnections connections{platform.loop, platform.network, form, log, counters, routes};
  HostList host_list{form, connections};
  Originator originator{platform.loop, form, log, connections, routes, counters, search_slots};
  HostDiscovery discovery{form, connections, originator};

  Replies replies{connections, counters, GetGUID(platform.loop.local_time())};
  QueryAnswering answering{shared_index, form, replies, log};
  Answers answers{answering};
  SharedScan scan{platform, form, shared_index, log};
  UploadServer uploads{platform, form, shared_index, host_cache, log};

  SearchResults results{platform.loop, form, log, host_cache, [] {}};
  SearchCommands search_commands{form, originator};
  DownloadList downloads{form};
  DownloadClient download_client{platform.loop, platform.network, platform.files, form,
                                 log,           downloads,        options.version};
  DownloadQueue download_queue{platform.loop, platform.files, form,           log,
                               results,       downloads,      download_client};

  Router router{
      form, log, connections, routes, counters, originator, {host_cache, answers, results}};
  Framing framing{router, log};

  ListRefresh refresh{platform.loop, form, connections, counters};
  Listeners listeners{form, platform.boxes, connections, uploads};
  SmallWindowCommands small_windows{form, platform.boxes};
  PictureGame game{form, [this] { end_program(); }};
  ControlSocket control;
};

Servent::Servent(Platform platform, ServentOptions options)
    : parts_(std::make_unique<Parts>(platform, std::move(options))) {
  parts_->request_exit = [this] { request_exit(); };
}

Servent::~Servent() { *parts_->alive = false; }

Form& Servent::form() { return parts_->form; }

Servent::Started Servent::start() {
  Parts& p = *parts_;
  p.lock = p.platform.files.lock_profile();
  if (!p.lock) {
    p.platform.boxes.show(BoxIcon::information, "VelMora",
                          "VelMora Program is Already Running\n\nCheck the System Tray");
    return Started::already_running;
  }
  p.running = true;
  const std::string shared_list_text = p.scan.load_saved();

  const std::string store_text = p.store.load();
  if (!store_text.empty()) p.log.debug_log(store_text);
  // A stored value that does not convert ends the loading; the rest keeps its design-time values.
  trap(p.log, "load_settings: ", [&] { load_settings(p.form, p.store, p.cache_filter); });
  for (const auto& [name, value] : p.options.set) {
    set_from_text(named_control(p.form, name), value);
  }

  p.listeners.open();
  const std::string& shown = p.form.StatusBar.panel(1);
  for (const std::string& text : {shared_list_text, store_text}) {
    if (!text.empty() && shown.empty()) p.form.StatusBar.set_panel(1, text);
  }
  p.form.version.set_text("Version: " + p.options.version);
  p.platform.tray.add(p.form.frmMain.caption());
  p.refresh.start();
  trap(p.log, "control_socket: ", [&] { p.control.open(); });
  return Started::yes;
}

void Servent::shutdown() {
  Parts& p = *parts_;
  if (!p.running) return;
  p.running = false;
  p.refresh.stop();
  p.scan.stop();
  p.connections.close_all();
  p.uploads.shutdown();
  p.download_client.close_all();
  p.form.frmDebug.hide();
  p.form.frmUnknown.hide();
  Save_settings(p.form, p.store, p.log);
  p.platform.tray.remove();
  p.control.close();
  p.lock.reset();
}

void Servent::request_exit() {
  parts_->platform.loop.post([this, alive = parts_->alive] {
    if (!*alive || !parts_->running) return;
    shutdown();
    if (on_ended) on_ended();
  });
}

}  // namespace velmora
