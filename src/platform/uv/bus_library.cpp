#include "platform/uv/bus_library.h"

#include <dlfcn.h>

#include <cerrno>

#include "platform/error.h"

namespace velmora::uv {
namespace {

template <class Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  if (function == nullptr) throw PlatformError::from_errno(ENOSYS);
}

}  // namespace

BusLibrary::BusLibrary() {
  void* library = dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library == nullptr) throw PlatformError::from_errno(ENOENT);
  find(library, "sd_bus_open_system", open_system);
  find(library, "sd_bus_close_unref", close_unref);
  find(library, "sd_bus_get_fd", get_fd);
  find(library, "sd_bus_get_events", get_events);
  find(library, "sd_bus_get_timeout", get_timeout);
  find(library, "sd_bus_process", process);
  find(library, "sd_bus_call_async", call_async);
  find(library, "sd_bus_match_signal_async", match_signal_async);
  find(library, "sd_bus_message_new_method_call", message_new_method_call);
  find(library, "sd_bus_message_set_auto_start", message_set_auto_start);
  find(library, "sd_bus_message_append", message_append);
  find(library, "sd_bus_message_read", message_read);
  find(library, "sd_bus_message_is_method_error", message_is_method_error);
  find(library, "sd_bus_message_unref", message_unref);
}

}  // namespace velmora::uv
