// What sharing asks of the rest of the program; the composition root answers.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/network.h"
#include "protocol/push_offer.h"

namespace velmora {

// Asked by query answering: how a reply leaves.
class ReplyChannel {
 public:
  virtual ~ReplyChannel() = default;
  // Sends the whole descriptor on the message connection; raises a PlatformError when it cannot.
  virtual void send_reply(std::size_t connection, std::string_view descriptor) = 0;
  [[nodiscard]] virtual std::string local_address() const = 0;  // of the message listener
  [[nodiscard]] virtual const std::string& servent_guid() const = 0;
  virtual void count_query_hit_sent() = 0;
};

// Asked when another servent connects to the upload port and offers a file.
class OfferTaker {
 public:
  virtual ~OfferTaker() = default;
  // Whether offers are told from requests at all.
  [[nodiscard]] virtual bool takes_offers() const = 0;
  // Takes the connection over if a download waits for exactly this offer; else leaves it.
  virtual bool take_offer(const PushOffer& offer, std::unique_ptr<Socket>& connection) = 0;
};

// Asked before this servent connects to an address that a stranger named.
class AddressRule {
 public:
  virtual ~AddressRule() = default;
  [[nodiscard]] virtual bool keeps_out(const std::string& address) const = 0;
};

// Asked by the upload log: the name known for a client's address, "?" when there is none.
class ClientNames {
 public:
  virtual ~ClientNames() = default;
  virtual std::string name_of(const std::string& address) = 0;
};

}  // namespace velmora
