// The watch on real folders: the kernel's inotify, one instance for each watch, read by libuv's
// loop when it has something to tell. It hears of entries that come, go or are closed after
// writing, not of every single write.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/folder_watch.h"

namespace velmora::uv {

class UvLoop;

class UvFolderWatcher : public FolderWatcher {
 public:
  // Relative folders are taken from the profile folder. The loop outlives every watch.
  UvFolderWatcher(UvLoop& loop, std::string profile) : loop_(loop), profile_(std::move(profile)) {}

  std::unique_ptr<FolderWatch> make_watch(FolderWatchEvents& events) override;

 private:
  UvLoop& loop_;
  std::string profile_;
};

}  // namespace velmora::uv
