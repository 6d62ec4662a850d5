// Answers the pushes that are for this servent while the switch "push" is on: connects to the
// address in one, offers the file, and hands the connection to the upload server, under whose
// limits the rest goes on. Since a stranger names the address, only files that are shared are
// offered, four connections are made at a time, four a minute to one address and 64 a minute in
// all, and none to an address that the filter keeps out. It routes nothing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/platform.h"
#include "protocol/payloads.h"
#include "share/questions.h"
#include "share/shared_index.h"
#include "share/upload_server.h"

namespace velmora {

class PushAnswering {
 public:
  static constexpr std::size_t kMostAtOnce = 4;
  static constexpr std::ptrdiff_t kMostToOneAddress = 4;  // in kOfferMinuteMs
  static constexpr std::size_t kMostInAll = 64;           // in kOfferMinuteMs
  static constexpr std::int64_t kOfferMinuteMs = 60'000;

  PushAnswering(const Platform& platform, const SharedIndex& index, const ReplyChannel& replies,
                const AddressRule& rule, UploadServer& uploads, DebugLog& log,
                const Behaviour& behaviour);
  ~PushAnswering();

  // Returns whether the push is for this servent; traps its errors ("answer_push: ").
  bool answer_push(const Push& push);

  // Lets go of the connections that are being made.
  void stop();
  // Does so when the switch is off.
  void follow_behaviour();

 private:
  class Outgoing;
  struct Attempt {
    std::string address;
    std::int64_t at_ms = 0;
  };

  [[nodiscard]] bool may_connect(const Push& push);
  [[nodiscard]] bool shares(double file_number) const;
  void offer(const Push& push);

  EventLoop& loop_;
  Network& network_;
  const SharedIndex& index_;
  const ReplyChannel& replies_;
  const AddressRule& rule_;
  UploadServer& uploads_;
  DebugLog& log_;
  const Behaviour& behaviour_;
  std::array<std::unique_ptr<Outgoing>, kMostAtOnce> outgoing_;
  std::deque<Attempt> attempts_;  // of the last minute
};

}  // namespace velmora
