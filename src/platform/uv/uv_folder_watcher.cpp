#include "platform/uv/uv_folder_watcher.h"

#include <sys/inotify.h>
#include <uv.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "platform/uv/uv_descriptor.h"
#include "platform/uv/uv_directory.h"
#include "platform/uv/uv_handle.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {
namespace {

constexpr std::uint32_t kChanges = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                   IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::size_t kReadBytes = std::size_t{16} << 10;  // some hundred changes; a turn's most

class UvFolderWatch : public FolderWatch {
 public:
  UvFolderWatch(UvLoop& loop, std::string profile, FolderWatchEvents& events)
      : profile_(std::move(profile)),
        events_(events),
        inotify_(checked([] { return inotify_init1(IN_NONBLOCK | IN_CLOEXEC); })),
        poll_(make_handle<uv_poll_t>(this, [&](uv_poll_t* handle) {
          return uv_poll_init(loop.native(), handle, inotify_.get());
        })) {
    check(uv_poll_start(poll_.get(), UV_READABLE, [](uv_poll_t* handle, int, int) noexcept {
      static_cast<UvFolderWatch*>(handle->data)->read_changes();
    }));
    loop.work_begun();
  }

  void add(const std::string& folder) override {
    check_path(folder);
    const std::string path = folder.starts_with('/') ? folder : profile_ + "/" + folder;
    checked([&] { return inotify_add_watch(inotify_.get(), path.c_str(), kChanges | IN_ONLYDIR); });
  }

 private:
  // What does not fit is read in the loop's next turn.
  void read_changes() noexcept {
    alignas(inotify_event) std::array<char, kReadBytes> buffer;
    const ssize_t size =
        uninterrupted([&] { return read(inotify_.get(), buffer.data(), buffer.size()); });
    const std::weak_ptr<int> alive = alive_;
    for (ssize_t at = 0; at < size && !alive.expired();) {
      inotify_event change{};
      std::memcpy(&change, buffer.data() + at, sizeof change);
      const char* name = buffer.data() + at + sizeof change;
      at += static_cast<ssize_t>(sizeof change + change.len);
      if ((change.mask & IN_IGNORED) != 0) continue;  // follows on the folder's own end
      events_.on_folder_changed(change.len == 0 ? std::string_view() : name);
    }
  }

  std::string profile_;
  FolderWatchEvents& events_;
  Descriptor inotify_;
  Handle<uv_poll_t> poll_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace

std::unique_ptr<FolderWatch> UvFolderWatcher::make_watch(FolderWatchEvents& events) {
  return std::make_unique<UvFolderWatch>(loop_, profile_, events);
}

}  // namespace velmora::uv
