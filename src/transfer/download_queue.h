// What the user does with downloads: a double click on a result queues it, the resume button starts
// every entry that is not running. Under the switch whole_files both are WholeDownloads' business.
// The transfers themselves are the download client's.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "form/form.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "transfer/download_buttons.h"
#include "transfer/download_client.h"
#include "transfer/download_list.h"
#include "transfer/search_results.h"
#include "transfer/whole_downloads.h"

namespace velmora {

class DownloadQueue {
 public:
  DownloadQueue(EventLoop& loop, Files& files, Form& form, DebugLog& log,
                const SearchResults& results, DownloadList& downloads, DownloadClient& client,
                const Behaviour& behaviour = kClassic);

  // The switch whole_files may have moved: begins or ends what it does. Returns what is wrong with
  // the file that the list is kept in, else "".
  std::string follow_behaviour();
  // The last look at the downloads, after the client has closed them.
  void stop();
  // Writes what the switch keeps; "" or what went wrong.
  std::string save();

  // Queues the result of that row of lfound; row 0 is none.
  void queue_result(std::size_t row);

  // Measures and connects every entry whose state is below 1. Traps its errors.
  void download_manager();

 private:
  [[nodiscard]] bool queued(const search_result& result) const;
  [[nodiscard]] std::size_t place_for_next() const;
  void measure(DownloadRecord& record);

  Files& files_;
  Form& form_;
  DebugLog& log_;
  const SearchResults& results_;
  DownloadList& downloads_;
  DownloadClient& client_;
  const Behaviour& behaviour_;
  WholeDownloads whole_;
  DownloadButtons buttons_;
  bool whole_on_ = false;  // follow_behaviour() has seen the switch on
  // Kept: it is never switched on; every waiting download is started by a click on resume_down. The
  // switch whole_files does switch it on.
  std::unique_ptr<Timer> downl_file_t_;
};

}  // namespace velmora
