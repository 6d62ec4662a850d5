// The upload port: accepts connections, answers their requests from the shared list, and sends the
// files in packets, one for each upload on every tick of its timer. The upload page's fields limit
// and pace it. It owns the listener, the slots and their connections; the shared list and the form
// are the program's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "form/form.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/one_based.h"
#include "platform/platform.h"
#include "share/http_request.h"
#include "share/questions.h"
#include "share/shared_index.h"
#include "share/upload_connection.h"
#include "share/upload_list.h"
#include "share/upload_log.h"
#include "share/upload_request.h"
#include "share/upload_slot.h"

namespace velmora {

class UploadServer : private ListenerEvents, private UploadConnectionEvents {
 public:
  UploadServer(const Platform& platform, Form& form, SharedIndex& index, ClientNames& names,
               DebugLog& log, const Behaviour& behaviour = kClassic);
  ~UploadServer() override;

  // Listens on the port; a listener that stood before is closed first. Uploads that run go on.
  // Raises a PlatformError ("Address already in use" and others).
  void listen(std::uint16_t port);
  void close_listener() { listener_.reset(); }
  // Who takes the files that others offer; not owned.
  void hand_offers_to(OfferTaker& taker) { offers_ = &taker; }
  // Serves a connection that this servent made, as if it had been accepted.
  void serve(std::unique_ptr<Socket> connection) { on_accept(std::move(connection)); }
  // Stops listening and closes every connection; the slots keep their last status.
  void shutdown();

  // Recounts the active uploads, follows the delay slider and shows the list anew. The limit on
  // uploads compares with the last recount only.
  void refresh();
  [[nodiscard]] std::int16_t active_uploads() const { return active_uploads_; }

  // The slots, for the pass that looks for missing host names.
  [[nodiscard]] OneBased<UploadSlot>& upload_slots() { return upload_slots_; }
  [[nodiscard]] const OneBased<UploadSlot>& upload_slots() const { return upload_slots_; }

 private:
  void on_accept(std::unique_ptr<Socket> pending) override;
  void on_request(std::size_t slot, const std::string& text) override;
  void on_no_request(std::size_t slot, const std::string& status) override;
  void on_client_gone(std::size_t slot) override;
  bool on_offer(std::size_t slot, const std::string& text) override;

  void Connect_in_upload_socket(std::unique_ptr<Socket> pending);
  std::size_t free_slot();
  void upload_Read(std::size_t index, const std::string& text);
  [[nodiscard]] std::string objection(const UploadRequest& request) const;
  void accept_request(UploadSlot& slot, const UploadRequest& request);
  void refuse(std::size_t index, const std::string& message);
  void answer_common_form(std::size_t index, const HttpRequest& request);
  [[nodiscard]] bool full() const;
  void start_sending(std::size_t index, std::string_view common_header = {});

  void upload_files();
  std::int64_t ticks_due();
  void send_packets(std::size_t index, std::int64_t ticks);
  void send_packet(std::size_t index);
  [[nodiscard]] bool may_follow(std::size_t index) const;
  [[nodiscard]] std::int32_t packet_length(const UploadSlot& slot) const;
  void count_upload(const UploadSlot& slot);
  void end_upload(std::size_t index, const std::string& status);
  void stop_upload(std::size_t index);
  void release(std::size_t index);
  void follow_slider();
  void start_ticking();

  EventLoop& loop_;
  Network& network_;
  Files& files_;
  Form& form_;
  SharedIndex& index_;
  DebugLog& log_;
  OfferTaker* offers_ = nullptr;
  const Behaviour& behaviour_;
  UploadLog upload_log_;
  OneBased<UploadSlot> upload_slots_{kMaxUploadSlots};
  UploadList list_;
  std::vector<std::unique_ptr<UploadConnection>> connections_;  // slot i has connections_[i - 1]
  std::unique_ptr<Timer> upload_file_t_;
  std::unique_ptr<Listener> listener_;
  std::string packet_;  // the one being sent; its memory serves one upload after the other
  std::int16_t active_uploads_ = 0;
  std::int64_t last_sent_ms_ = 0;  // when a header or a packet last left
  std::int64_t next_tick_ms_ = 0;  // due; means nothing while the timer is off
};

}  // namespace velmora
