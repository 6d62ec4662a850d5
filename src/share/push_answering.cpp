#include "share/push_answering.h"

#include <algorithm>
#include <utility>

#include "platform/trap.h"
#include "protocol/push_offer.h"

namespace velmora {
namespace {

constexpr int kConnectMs = 4000;
constexpr std::size_t kMostOfAName = 1024;

// What is offered of a stored name: without what is told of its audio behind character 1, and in
// one line.
std::string offered_name(const std::string& stored) {
  std::string name = stored.substr(0, std::min(stored.find('\1'), kMostOfAName));
  std::replace(name.begin(), name.end(), '\n', '_');
  return name;
}

}  // namespace

// One connection that is being made.
class PushAnswering::Outgoing : public SocketEvents {
 public:
  explicit Outgoing(PushAnswering& owner) : owner_(owner) {}

  void start(std::string text, const std::string& address, std::uint16_t port) {
    text_ = std::move(text);
    socket_ = owner_.network_.connect(address, port, kConnectMs, *this);
  }
  [[nodiscard]] bool free() const { return !socket_; }
  void stop() { socket_.reset(); }

  void on_connect() override {
    std::unique_ptr<Socket> socket = std::move(socket_);
    trap(owner_.log_, "answer_push: ", [&] {
      socket->write_alone(text_);
      owner_.uploads_.serve(std::move(socket));
    });
  }
  void on_connect_failed() override { socket_.reset(); }
  void on_read(std::string_view /*data*/) override {}
  void on_disconnect() override { socket_.reset(); }

 private:
  PushAnswering& owner_;
  std::string text_;
  std::unique_ptr<Socket> socket_;
};

PushAnswering::PushAnswering(const Platform& platform, const SharedIndex& index,
                             const ReplyChannel& replies, const AddressRule& rule,
                             UploadServer& uploads, DebugLog& log, const Behaviour& behaviour)
    : loop_(platform.loop),
      network_(platform.network),
      index_(index),
      replies_(replies),
      rule_(rule),
      uploads_(uploads),
      log_(log),
      behaviour_(behaviour) {}

PushAnswering::~PushAnswering() = default;

// Kept: with the switch off a push is counted and nothing else is done with it.
bool PushAnswering::answer_push(const Push& push) {
  if (!behaviour_.push || !(push.servent == std::string_view(replies_.servent_guid()))) {
    return false;
  }
  trap(log_, "answer_push: ", [&] {
    if (shares(push.file_number) && may_connect(push)) offer(push);
  });
  return true;
}

void PushAnswering::stop() {
  for (const auto& outgoing : outgoing_) {
    if (outgoing) outgoing->stop();
  }
  attempts_.clear();
}

void PushAnswering::follow_behaviour() {
  if (!behaviour_.push) stop();
}

bool PushAnswering::shares(double file_number) const {
  return index_.shared_files().has(static_cast<std::size_t>(file_number));
}

bool PushAnswering::may_connect(const Push& push) {
  const std::int64_t now_ms = loop_.now_ms();
  while (!attempts_.empty() && now_ms - attempts_.front().at_ms >= kOfferMinuteMs) {
    attempts_.pop_front();
  }
  const auto to_this_one =
      std::count_if(attempts_.begin(), attempts_.end(),
                    [&](const Attempt& attempt) { return attempt.address == push.address; });
  return attempts_.size() < kMostInAll && to_this_one < kMostToOneAddress &&
         !rule_.keeps_out(push.address);
}

void PushAnswering::offer(const Push& push) {
  const auto place = std::find_if(outgoing_.begin(), outgoing_.end(),
                                  [](const auto& one) { return !one || one->free(); });
  if (place == outgoing_.end()) return;
  if (!*place) *place = std::make_unique<Outgoing>(*this);
  const auto number = static_cast<std::size_t>(push.file_number);
  PushOffer offer{static_cast<std::int32_t>(number), {}, {}};
  offer.servent = replies_.servent_guid();
  offer.name = offered_name(index_.shared_files().at(number).name);
  attempts_.push_back({push.address, loop_.now_ms()});
  (*place)->start(offer_to_str(offer), push.address, push.port);
}

}  // namespace velmora
