// One loaded element of the array of message sockets: the socket, one timer that stands for its two
// companions, and what is left of a chunk, or of a descriptor that is waited for. Owned by
// MessageConnections; it passes the socket's events on under its index, and tells the socket how
// much a chunk lacks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/event_loop.h"
#include "platform/network.h"
#include "protocol/chunk_end.h"
#include "protocol/pending_bytes.h"

namespace velmora {

// Whom an element tells of its socket's events.
class MessageSocketOwner {
 public:
  virtual ~MessageSocketOwner() = default;
  virtual void msg_Connect(std::size_t index) = 0;
  virtual void msg_Timeout(std::size_t index) = 0;
  virtual void msg_Read(std::size_t index, std::string_view data) = 0;
  virtual void msg_Disconnect(std::size_t index) = 0;
};

class MessageSocket : public SocketEvents {
 public:
  // The generation tells a continuation that comes back whether the index was loaded anew since.
  MessageSocket(MessageSocketOwner& owner, std::size_t index, std::uint64_t number,
                std::int64_t now_ms)
      : generation(number),
        loaded_ms(now_ms),
        index_(static_cast<std::uint32_t>(index)),
        owner_(owner) {}

  void on_connect() override { owner_.msg_Connect(index_); }
  void on_connect_failed() override { owner_.msg_Timeout(index_); }
  void on_read(std::string_view data) override { owner_.msg_Read(index_, data); }
  void on_disconnect() override { owner_.msg_Disconnect(index_); }
  [[nodiscard]] std::size_t lacks(std::string_view queued) const override {
    if (pending) return 0;
    const std::size_t lacking = lacking_bytes(queued);
    return lacking == kEndUnknown ? kLacksAllQueued : lacking;
  }

  const std::uint64_t generation;
  const std::int64_t loaded_ms;
  std::unique_ptr<Socket> socket;
  // timeout_msg_t, and once the element is to be freed free_msgsock_t: both tick every 5000 ms, and
  // from then on the silence does not matter.
  std::unique_ptr<Timer> timer;
  // The rest of a chunk with more descriptors than one turn handles, and how far it is done.
  std::string rest;
  std::size_t rest_done = 0;
  // A descriptor that is not whole yet; null where they are not waited for.
  std::unique_ptr<PendingBytes> pending;
  bool rest_begun = false;  // some of the chunk was handled
  bool in_line = false;     // and nothing more is read meanwhile
  bool freeing = false;     // what the timer is for

 private:
  std::uint32_t index_;  // small, and beside the flags: there is one of these for every connection
  MessageSocketOwner& owner_;
};

}  // namespace velmora
