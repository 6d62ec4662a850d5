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
#include <vector>

#include "form/form.h"
#include "net/questions.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/network.h"
#include "platform/one_based.h"
#include "share/questions.h"
#include "transfer/download_list.h"
#include "transfer/farewells.h"

namespace velmora {

inline constexpr int kDownloadConnectMs = 4000;
// A download that brings no data for so many seconds ends.
inline constexpr std::int32_t kDownloadSilenceS = 120;
// What an entry keeps of the other side's stop message.
inline constexpr std::size_t kMaxDownloadMessage = 65535;

// How long an entry that was pushed for waits for the offer.
inline constexpr int kOfferMs = 30'000;

class DownloadClient : public OfferTaker {
 public:
  // `version` is the program's major.minor.revision. Without `pushes` none is sent.
  DownloadClient(EventLoop& loop, Network& network, Files& files, Form& form, DebugLog& log,
                 DownloadList& downloads, std::string version, PushSender* pushes = nullptr,
                 const Behaviour& behaviour = kClassic);
  ~DownloadClient() override;

  // Opens a connection for an entry that is not running. Returns "" when the attempt has started
  // (or ended with a status of its own), else the error's text.
  std::string connect(std::size_t entry, const std::string& address, std::int16_t port,
                      const std::string& host_name);

  // A servent that was pushed for offers its file: the entry that waits for exactly that one goes
  // on over its connection.
  [[nodiscard]] bool takes_offers() const override { return behaviour_.push; }
  bool take_offer(const PushOffer& offer, std::unique_ptr<Socket>& connection) override;
  // Ends an entry's transfer with that status; false while all its bytes are there and it becomes a
  // finished file.
  bool stop(std::size_t entry, const std::string& status);

  // The entries were put in other places: entry i stands at place[i], 0 for one that is gone, which
  // must not be running.
  void renumber(const std::vector<std::size_t>& place);

  // Closes every connection; the entries keep what they have.
  void close_all();

 private:
  class Element;

  Element& free_element();
  void dial(Element& element);
  void end(Element& element, const std::string& status);
  void no_more(Element& element, const std::string& status);

  // Events of one `downl` element.
  void downl_Connect(Element& element);
  void downl_Read(Element& element, std::string_view block);
  void refused(Element& element);
  void timeout_downl_t_Timer(Element& element);
  void silence_Timer(Element& element);

  bool ask_push(Element& element);
  void incomming_download_data(Element& element, std::string_view block);
  template <class Body>
  void guarded(Element& element, Body&& body);
  void process(Element& element, std::string_view block);
  void process_data(Element& element, std::string_view block);
  bool take_standard(Element& element, std::string_view block);
  void process_standard_header(Element& element, std::string_view bytes, std::size_t header);
  void write_standard(Element& element, std::string_view bytes);
  void ask_in_standard_form(Element& element);
  void process_block(Element& element, std::string_view block);
  void refuse(Element& element, std::string_view block);
  void process_reply(Element& element, std::string_view header, std::string_view rest);
  void process_header(Element& element, std::string_view header);
  bool same_length(const Element& element, std::uint64_t length);
  void end_as_other_file(Element& element);
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
  PushSender* pushes_;
  const Behaviour& behaviour_;
  OneBased<std::unique_ptr<Element>> downl_;
  Farewells farewells_;
  std::deque<Element*> finishing_;  // all bytes are there; the file gets its name in a later turn
  // Continuations look here whether the client still exists.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace velmora
