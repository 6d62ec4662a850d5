#include "app/servent.h"

#include "app/behaviour_choice.h"
#include "app/colour_chooser.h"
#include "app/control_socket.h"
#include "app/control_verbs.h"
#include "app/directory_chooser.h"
#include "app/form_debug_log.h"
#include "app/list_refresh.h"
#include "app/listeners.h"
#include "app/picture_game.h"
#include "app/program_answers.h"
#include "app/servent_identifier.h"
#include "app/settings.h"
#include "app/settings_store.h"
#include "app/small_window_commands.h"
#include "app/trapped_loop.h"
#include "net/auto_connector.h"
#include "net/cache_commands.h"
#include "net/cache_file.h"
#include "net/cache_list.h"
#include "net/dns_auto_update.h"
#include "net/dns_lookups.h"
#include "net/dns_names.h"
#include "net/dns_scan.h"
#include "net/host_cache.h"
#include "net/host_discovery.h"
#include "net/host_list.h"
#include "net/keep_alive.h"
#include "net/local_servents.h"
#include "net/message_connections.h"
#include "net/originator.h"
#include "net/relay.h"
#include "net/router.h"
#include "platform/trap.h"
#include "protocol/conversions.h"
#include "protocol/framing.h"
#include "protocol/identifiers.h"
#include "share/push_answering.h"
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
namespace {

// The texts that are not empty, in one line.
std::string joined(std::initializer_list<std::string> texts) {
  std::string line;
  for (const std::string& text : texts) {
    if (!line.empty() && !text.empty()) line += "; ";
    line += text;
  }
  return line;
}

}  // namespace

// The members stand in the order in which they need each other.
struct Servent::Parts {
  Parts(Platform machine, ServentOptions wishes)
      : loop(machine.loop, log),
        platform{loop,           machine.network,        machine.files,   machine.boxes,
                 machine.tray,   machine.programs,       machine.control, machine.dns,
                 machine.random, machine.local_services, machine.folders},
        options(std::move(wishes)),
        store(platform.files, options.settings_path),
        control(form, platform.loop, platform.control, [this] { end_program(); }) {
    log.echo = options.echo_log;
    connections.deliver_to(framing);
    uploads.hand_offers_to(download_client);
    refresh.also = [this] {
      uploads.refresh();
      downloads.redraw();
    };
    behaviour_choice.on_change = [this] {
      const std::string text = settled ? follow_behaviour() : "";
      if (!text.empty()) form.StatusBar.set_panel(1, text);
    };
    host_cache.on_change = [this] { results.display_soon(); };
    form.mnuexit.on_click = [this] { end_program(); };
  }

  // For what does more than look at its switch when it needs it. Returns what could not be loaded.
  std::string follow_behaviour() {
    connections.behaviour_changed();
    identifier.behaviour_changed();
    local_servents.update();
    scan.follow_behaviour();
    relay.follow_behaviour();
    push_answering.follow_behaviour();
    keep_alive.follow_behaviour();
    results.display_query_reply();
    return download_queue.follow_behaviour();
  }

  void end_program() {
    if (request_exit) request_exit();
  }

  Form form;
  FormDebugLog log{form.frmDebug};
  Behaviour behaviour;
  BehaviourChoice behaviour_choice{form, behaviour};
  TrappedLoop loop;
  Platform platform;
  ServentOptions options;
  std::function<void()> request_exit;
  bool running = false;
  bool settled = false;         // the settings are loaded, so that the switches are the user's
  bool cache_in_doubt = false;  // the file could not be read, or not all of it
  std::shared_ptr<bool> alive = std::make_shared<bool>(true);
  std::unique_ptr<ProfileLock> lock;

  SettingsStore store;
  FilterArray cache_filter;
  TrafficCounters counters;
  RoutingTable routes;

  HostCache host_cache{platform.loop, cache_filter, log, behaviour};
  CacheList cache_list{form, host_cache};
  CacheCommands cache_commands{form, platform.boxes, host_cache, cache_list, cache_filter};
  DnsLookups dns_lookups{platform.dns, form};
  DnsNames host_names{host_cache, dns_lookups, log};
  ClientNamesOfCache client_names{host_names};
  DnsScan dns_scan{platform.loop, form, host_cache, dns_lookups, log};
  SearchSlots search_slots{form};
  SharedIndex shared_index;
  MessageConnections connections{platform.loop, platform.network, form,     log,
                                 counters,      routes,           behaviour};
  HostList host_list{form, connections};
  Identifiers identifiers{platform.loop, platform.random, behaviour};
  Relay relay{platform.loop, connections, counters, search_slots, behaviour};
  Originator originator{identifiers, form, log, connections, routes, counters, relay, behaviour};
  HostDiscovery discovery{form,       log,        connections,
                          originator, host_cache, [this] { dns_update.dns_auto_update(); }};
  LocalServents local_servents{
      platform.loop, platform.local_services, form, log, connections, host_cache, behaviour};
  AutoConnector auto_connector{platform.loop, form, log, connections, host_cache};
  KeepAlive keep_alive{platform.loop, form, log, connections, originator, host_cache, behaviour};

  ServentIdentifier identifier{GetGUID(platform.loop.local_time()), platform.files, platform.random,
                               log, behaviour};
  Replies replies{connections, counters, identifier};
  QueryAnswering answering{shared_index, form, replies, log, behaviour};
  Answers answers{answering};
  SharedScan scan{platform, form, shared_index, log, behaviour};
  UploadServer uploads{platform, form, shared_index, client_names, log, behaviour};
  CacheFilterRule push_rule{cache_filter, connections, behaviour};
  PushAnswering push_answering{platform, shared_index, replies, push_rule, uploads, log, behaviour};
  PushAnswers push_answers{push_answering};
  PushRequests push_requests{relay, originator};

  HitFilter hit_filter{form, search_slots, behaviour};
  SearchResults results{
      platform.loop, form,       log, host_names, [this] { cache_list.display_cache(); },
      behaviour,     &hit_filter};
  SearchCommands search_commands{form, originator};
  DownloadList downloads{form};
  DownloadClient download_client{platform.loop, platform.network, platform.files, form,     log,
                                 downloads,     options.version,  &push_requests, behaviour};
  DownloadQueue download_queue{platform.loop, platform.files,  form,     log, results,
                               downloads,     download_client, behaviour};

  NamesOf<ConnectionSlot> connection_names{
      connections.connection_slots(), form.lHosts,
      [](const ConnectionSlot& slot) { return slot.state > kNeverUsed; }};
  NamesOf<DownloadRecord> download_names{downloads.download_list(), form.ldown};
  NamesOf<UploadSlot> upload_names{uploads.upload_slots(), form.lupload};
  NamesOf<search_result> result_names{results.search_results(), form.lfound};
  DnsAutoUpdate dns_update{platform.loop,
                           host_names,
                           log,
                           {&connection_names, &download_names, &upload_names, &result_names}};

  Router router{form,     log,        connections, routes,
                counters, originator, relay,       {host_cache, answers, results, push_answers},
                behaviour};
  Framing framing{router, log, behaviour};

  ListRefresh refresh{platform.loop, form, connections, counters};
  Listeners listeners{form, platform.boxes, connections, uploads};
  SmallWindowCommands small_windows{form, platform.boxes};
  ColourChooser colour_chooser{form};
  DirectoryChooser directory_chooser{form};
  PictureGame game{form, [this] { end_program(); }};
  ControlSocket control;
};

Servent::Servent(Platform platform, ServentOptions options)
    : parts_(std::make_unique<Parts>(platform, std::move(options))) {
  parts_->request_exit = [this] { request_exit(); };
}

Servent::~Servent() { *parts_->alive = false; }

Form& Servent::form() { return parts_->form; }

const TrafficHistory& Servent::traffic_history() const { return parts_->refresh.traffic_history(); }

ServentParts Servent::parts() const {
  return {parts_->connections, parts_->routes,  parts_->downloads,
          parts_->uploads,     parts_->results, parts_->counters};
}

Servent::Started Servent::start() {
  Parts& p = *parts_;
  p.lock = p.platform.files.lock_profile();
  if (!p.lock) {
    p.platform.boxes.show(BoxIcon::information, "VelMora",
                          "VelMora Program is Already Running\n\nCheck the System Tray");
    return Started::already_running;
  }
  p.running = true;
  const std::string cache_text = load_cache(p.platform.files, kCacheFile, p.host_cache);
  p.cache_in_doubt = !cache_text.empty();
  p.cache_list.display_cache();
  const std::string shared_list_text = p.scan.load_saved();

  const std::string store_text = p.store.load();
  if (!store_text.empty()) p.log.debug_log(store_text);
  // A stored value that does not convert ends the loading; the rest keeps its design-time values.
  if (!trap(p.log, "load_settings: ", [&] { load_settings(p.form, p.store, p.cache_filter); })) {
    // The next save writes the fields as they are now; what was stored is not lost with that.
    trap(p.log, "load_settings: ", [&] { p.store.keep_copy(); });
  }
  apply_colors(p.form);
  for (const auto& [name, value] : p.options.set) {
    set_from_text(named_control(p.form, name), value);
  }

  p.settled = true;
  const std::string downloads_text = p.follow_behaviour();

  p.listeners.open();
  // The listeners have cleared the panel; what they say themselves stays.
  if (p.form.StatusBar.panel(1).empty()) {
    p.form.StatusBar.set_panel(1,
                               joined({cache_text, shared_list_text, store_text, downloads_text}));
  }
  p.form.version.set_text("Version: " + p.options.version);
  p.platform.tray.add(p.form.frmMain.caption());
  p.refresh.start();
  p.dns_update.start();
  p.local_servents.update();
  trap(p.log, "control_socket: ", [&] { p.control.open(); });
  return Started::yes;
}

void Servent::shutdown() {
  Parts& p = *parts_;
  if (!p.running) return;
  p.running = p.settled = false;
  // Each on its own: one that fails keeps none of the others from being done.
  const auto step = [&](auto&& body) { trap(p.log, "shutdown: ", body); };
  step([&] { p.dns_scan.stop(); });
  step([&] { p.dns_update.stop(); });
  step([&] { p.dns_lookups.cancel(); });
  step([&] { p.refresh.stop(); });
  step([&] { p.scan.stop(); });
  step([&] { p.auto_connector.stop(); });
  step([&] { p.local_servents.stop(); });
  step([&] { p.keep_alive.stop(); });
  step([&] { p.push_answering.stop(); });
  step([&] { p.connections.close_all(); });
  step([&] { p.uploads.shutdown(); });
  step([&] { p.download_client.close_all(); });
  step([&] { p.download_queue.stop(); });
  step([&] {
    p.form.frmDebug.hide();
    p.form.frmUnknown.hide();
  });
  save();
  step([&] { p.platform.tray.remove(); });
  step([&] { p.control.close(); });
  p.lock.reset();
}

void Servent::save() {
  Parts& p = *parts_;
  Save_settings(p.form, p.store, p.log);
  const std::string downloads_text = p.download_queue.save();
  if (!downloads_text.empty()) {
    p.log.debug_log(downloads_text);
    p.platform.boxes.show(BoxIcon::critical, "Problems saving the downloads", downloads_text);
  }
  trap(p.log, "shutdown: ", [&] {
    Files& files = p.platform.files;
    std::string cache_text = p.cache_in_doubt ? keep_cache(files, kCacheFile) : "";
    if (cache_text.empty()) {
      p.cache_in_doubt = false;  // it is kept; what lies there next is our own
      cache_text = save_cache(files, kCacheFile, p.host_cache);
    }
    if (cache_text.empty()) return;
    p.platform.boxes.show(BoxIcon::critical, "Problems saving Cache list", cache_text);
  });
}

void Servent::request_exit() {
  parts_->platform.loop.post([this, alive = parts_->alive] {
    if (!*alive || !parts_->running) return;
    shutdown();
    if (on_ended) on_ended();
  });
}

}  // namespace velmora
