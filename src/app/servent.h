// The whole program but its faces: the composition root. It owns the form, the program-wide state
// and every module, wires them, and runs start-up and shutdown in their fixed order. It runs on
// whatever platform it is given (not owned, must outlive it), and several may live in one process.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/traffic_history.h"
#include "form/form.h"
#include "platform/platform.h"

namespace velmora {

struct ServentOptions {
  std::string version = "0.1.0";                // major.minor.revision
  std::string settings_path = "settings.toml";  // relative to the profile folder
  // Fields to set after the settings are loaded and before the listeners open, in order.
  std::vector<std::pair<std::string, std::string>> set;
  std::function<void(const std::string& line)> echo_log;  // every debug line, may be empty
};

class DownloadList;
class MessageConnections;
class RoutingTable;
class SearchResults;
class UploadServer;
struct TrafficCounters;

// The parts of a running servent that a checker looks at beside its form.
struct ServentParts {
  const MessageConnections& connections;
  const RoutingTable& routes;
  const DownloadList& downloads;
  const UploadServer& uploads;
  const SearchResults& results;
  const TrafficCounters& counters;
};

class Servent {
 public:
  Servent(Platform platform, ServentOptions options);
  ~Servent();
  Servent(const Servent&) = delete;
  Servent& operator=(const Servent&) = delete;

  enum class Started { yes, already_running };
  // Runs the start-up. When the profile is in use the person is told and nothing else happens.
  // Raises a ControlError for a field of `set` that cannot be set.
  Started start();

  // Runs the ordered shutdown, once; every later call does nothing.
  void shutdown();

  // Writes the settings and the host cache, as the shutdown does.
  void save();

  // Ends the program in the next turn: the tray menu's exit, the quit of the control socket, a
  // signal. `on_ended` is called after the shutdown.
  void request_exit();
  std::function<void()> on_ended;

  [[nodiscard]] Form& form();
  [[nodiscard]] const TrafficHistory& traffic_history() const;
  [[nodiscard]] ServentParts parts() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace velmora
