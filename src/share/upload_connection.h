// The wire side of one upload slot: collects the request, tells when the next packet may leave, and
// closes in the way that the moment asks for. One object serves its slot again and again; it knows
// neither files nor limits. Owned by the upload server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/behaviour.h"
#include "platform/event_loop.h"
#include "platform/network.h"

namespace velmora {

inline constexpr std::size_t kMaxUploadRequest = 8192;  // bytes; a longer one is not answered
inline constexpr int kRequestMs = 30000;                // from accepting to the whole request
inline constexpr int kQuietMs = 500;       // after the last byte, when the empty line is missing
inline constexpr int kHeaderAloneMs = 50;  // so that the header arrives as a read of its own
inline constexpr int kStopPollMs = 50;
inline constexpr int kStopMs = 5000;  // for the packets before a stop message to arrive

// What a connection tells its server. It may be released inside any of these.
class UploadConnectionEvents {
 public:
  virtual ~UploadConnectionEvents() = default;
  virtual void on_request(std::size_t slot, const std::string& text) = 0;       // once
  virtual void on_no_request(std::size_t slot, const std::string& status) = 0;  // already closed
  virtual void on_client_gone(std::size_t slot) = 0;
  // It begins as an offer, not as a request. False: that means nothing here.
  virtual bool on_offer(std::size_t slot, const std::string& text) = 0;
};

class UploadConnection : public SocketEvents {
 public:
  UploadConnection(EventLoop& loop, std::size_t slot, UploadConnectionEvents& events,
                   const Behaviour& behaviour);

  void take(std::unique_ptr<Socket> socket);
  // Closes at once; bytes already written still leave.
  void release();
  // Closes with a last message that arrives alone: after all packets have, within kStopMs, or not
  // at all.
  void release_with(std::string message);
  // Gives the socket away as it is; the connection is free for another.
  std::unique_ptr<Socket> hand_over();

  [[nodiscard]] bool in_use() const { return socket_ != nullptr; }
  [[nodiscard]] bool connected() const { return socket_ && socket_->connected(); }

  // Each raises a PlatformError when it cannot be sent.
  void send_message(std::string_view text) { socket_->write(text); }
  void send_header(std::string_view header);
  // For clients that read the header wherever it ends: packets may follow at once.
  void send_common_header(std::string_view header);
  void send_packet(std::string_view bytes) { socket_->write(bytes); }
  // Whether a packet may leave: everything before it is with the kernel, the header with the peer.
  [[nodiscard]] bool ready();
  // Whether a packet of so many bytes may leave behind others that wait.
  [[nodiscard]] bool has_room(std::size_t bytes) const {
    return socket_->unsent() + bytes <= kMaxUnsentPerSocket;
  }

 private:
  void on_connect() override {}
  void on_connect_failed() override {}
  void on_read(std::string_view data) override;
  void on_disconnect() override;

  void on_deadline();
  void on_step();
  void collect(std::string_view data);
  void answer();
  void send_last_message();

  enum class Phase { request, transfer, stopping };

  EventLoop& loop_;
  std::size_t slot_;
  UploadConnectionEvents& events_;
  const Behaviour& behaviour_;
  std::unique_ptr<Socket> socket_;
  Phase phase_ = Phase::request;
  std::unique_ptr<Timer> deadline_;  // for the request, then for the stop message
  std::unique_ptr<Timer> step_;      // quiet time of the request, then the poll before the message
  std::string request_;
  std::string message_;
  std::int64_t header_ms_ = 0;
  bool header_arrived_ = false;
};

}  // namespace velmora
