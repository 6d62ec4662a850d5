// The sharing part of the configuration page: the directory list, the scan button and the two
// labels. It starts a scan, keeps it going a little in every turn of the loop, and puts the
// finished list in the place of the old one. It owns the scan, not the list. With the switch
// large_library the scan is another one, which is also started when the folders have changed.
#pragma once

#include <memory>
#include <string>

#include "form/form.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/platform.h"
#include "share/library_watch.h"
#include "share/shared_file_scan.h"
#include "share/shared_index.h"

namespace velmora {

class SharedScan {
 public:
  SharedScan(const Platform& platform, Form& form, SharedIndex& index, DebugLog& log,
             const Behaviour& behaviour = kClassic);

  // Reads the list that the last scan saved; start-up only. Returns the text it put into the status
  // bar, empty when it put none.
  std::string load_saved();

  [[nodiscard]] bool scanning() const { return scan_ != nullptr; }
  // Gives up a scan that is under way; the list stays as it was.
  void stop();

  // The switch may have moved: a library is scanned soon, or no more by itself.
  void follow_behaviour();

 private:
  void start();
  void rescan();
  std::shared_ptr<FileScan> new_scan();
  void post_turn();
  void turn();
  void finish();
  void show_progress();
  void give_back();
  void show_count();
  void show_total(const std::string& total);

  EventLoop& loop_;
  Files& files_;
  Form& form_;
  SharedIndex& index_;
  DebugLog& log_;
  const Behaviour& behaviour_;
  LibraryWatch watch_;
  bool by_itself_ = false;          // the scan that runs
  bool follows_ = false;            // what changes is scanned by itself
  std::shared_ptr<FileScan> scan_;  // continuations hold it weakly
};

}  // namespace velmora
