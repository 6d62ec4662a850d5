// The functions of the message bus library that this program calls. The library is loaded when the
// bus is first asked for: few servents ever are, and it is larger than the rest of the daemon. The
// functions have their own names and types.
#pragma once

#include <systemd/sd-bus.h>

namespace velmora::uv {

struct BusLibrary {
  // Raises the platform's error where the library is not installed. It stays loaded.
  BusLibrary();

  decltype(&sd_bus_open_system) open_system;
  decltype(&sd_bus_close_unref) close_unref;
  decltype(&sd_bus_get_fd) get_fd;
  decltype(&sd_bus_get_events) get_events;
  decltype(&sd_bus_get_timeout) get_timeout;
  decltype(&sd_bus_process) process;
  decltype(&sd_bus_call_async) call_async;
  decltype(&sd_bus_match_signal_async) match_signal_async;
  decltype(&sd_bus_message_new_method_call) message_new_method_call;
  decltype(&sd_bus_message_set_auto_start) message_set_auto_start;
  decltype(&sd_bus_message_append) message_append;
  decltype(&sd_bus_message_read) message_read;
  decltype(&sd_bus_message_is_method_error) message_is_method_error;
  decltype(&sd_bus_message_unref) message_unref;
};

}  // namespace velmora::uv
