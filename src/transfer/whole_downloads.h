// The download list under the switch whole_files: every second it looks what has ended, starts what
// waits as far as the limit allows, tries failed downloads again after growing pauses, and changes
// sources. It keeps the list in a file of the profile. The transfers themselves are the download
// client's; entries are measured by their partial files. Entries count from 1, times are ms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "form/form.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "transfer/download_client.h"
#include "transfer/download_list.h"
#include "transfer/search_results.h"

namespace velmora {

class WholeDownloads {
 public:
  WholeDownloads(EventLoop& loop, Files& files, Form& form, DebugLog& log,
                 const SearchResults& results, DownloadList& downloads, DownloadClient& client);

  // The switch: takes the list's entries over and adds those of the file; lets go of all that is
  // not classic. What is wrong with the file is returned, and its copy kept.
  std::string begin();
  void end();

  // What a person does.
  void queue(std::size_t row);  // of lfound
  void resume_all();
  void pause(std::size_t entry);
  void remove(std::size_t entry);
  void move_up(std::size_t entry);
  void move_down(std::size_t entry);

  // To be called every second. Traps its errors.
  void pass();

  // Sees what has ended.
  void settle();
  // Writes the file if the list has changed; "" or what went wrong.
  std::string save();

 private:
  [[nodiscard]] OneBased<DownloadRecord>& list() { return downloads_.download_list(); }
  void take_over_all();
  void take_over(DownloadRecord& entry);
  void cut_to_received(const DownloadRecord& entry);
  static void add_to(DownloadRecord& entry, const DownloadRecord& loaded);
  void add_loaded(std::vector<DownloadRecord> loaded);
  [[nodiscard]] std::size_t find(const search_result& result) const;
  void add_entry(const search_result& result);
  void offer(std::size_t entry, const search_result& result, bool by_person);

  bool ended(std::size_t entry);
  void find_sources(const std::vector<std::size_t>& entries);
  void wait_longer(DownloadRecord& entry);
  void start_waiting();
  void start(std::size_t entry);
  bool final_name_is_taken(DownloadRecord& entry);
  void show_minutes();
  void clear_finished();
  void keep_only(const std::function<bool(const DownloadRecord&)>& wanted);
  void swap(std::size_t one, std::size_t other);
  void changed();

  EventLoop& loop_;
  Files& files_;
  Form& form_;
  DebugLog& log_;
  const SearchResults& results_;
  DownloadList& downloads_;
  DownloadClient& client_;
  bool changed_ = false;   // since the file was written
  bool in_doubt_ = false;  // what lies in the file was not understood and not kept
  std::int64_t next_save_ms_ = 0;
};

}  // namespace velmora
