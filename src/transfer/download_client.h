// Fetches files from other servents' upload servers. It owns the `downl` sockets, each with its
// timers, one for every running entry of the download list; what it learns it writes into the
// entry. Every end of a transfer closes timers and file, sets the entry's state below 1 and leaves
// the status that explains it; the partial file stays for the next resumption. The socket closes
// with it, but after the last byte that is left to the server for a few seconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "form/form.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/network.h"
#include "platform/one_based.h"
#include "transfer/download_list.h"

namespace velmora {

inline constexpr int kDownloadConnectMs = 4000;
// A download that brings no data for so many seconds ends.
inline constexpr std::int32_t kDownloadSilenceS = 120;
// What an entry keeps of the other side's stop message.
inline constexpr std::size_t kMaxDownloadMessage = 65535;

class DownloadClient {
 public:
  // `version` is the program's major.minor.revision.
  DownloadClient(EventLoop& loop, Network& network, Files& files, Form& form, DebugLog& log,
                 DownloadList& downloads, std::string version);
  ~DownloadClient();

  // Opens a connection for an entry that is not running. Returns "" when the attempt has started
  // (or ended with a status of its own), else the error's text.
  std::string connect(std::size_t entry, const std::string& address, std::int16_t port,
                      const std::string& host_name);

  // Closes every connection; the entries keep what they have.
  void close_all();

 private:
  class Element;

  Element& free_element();
  void end(Element& element, const std::string& status);
  void no_more(Element& element, const std::string& status);

  // Events of one `downl` element.
  void downl_Connect(Element& element);
  void downl_Read(Element& element, std::string_view block);
  void timeout_downl_t_Timer(Element& element);
  void silence_Timer(Element& element);

  void incomming_download_data(Element& element, std::string_view block);
  template <class Body>
  void guarded(Element& element, Body&& body);
  void process(Element& element, std::string_view block);
  void process_data(Element& element, std::string_view block);
  void process_block(Element& element, std::string_view block);
  void refuse(Element& element, std::string_view block);
  void process_header(Element& element, std::string_view header);
  void open_file(Element& element);
  void write_block(Element& element, std::string_view block);
  void finish_soon(Element& element);
  void plan_finish();
  void finish_next();
  void finish(Element& element);
  void end_as_done(Element& element);
  DownloadRecord& record_of(const Element& element);

  EventLoop& loop_;
  Network& network_;
  Files& files_;
  Form& form_;
  DebugLog& log_;
  DownloadList& downloads_;
  std::string version_;
  OneBased<std::unique_ptr<Element>> downl_;
  std::deque<Element*> finishing_;  // all bytes are there; the file gets its name in a later turn
  // Continuations look here whether the client still exists.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace velmora
