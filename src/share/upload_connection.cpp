#include "share/upload_connection.h"

#include <utility>

#include "platform/trap.h"
#include "protocol/push_offer.h"
#include "share/http_request.h"

namespace velmora {
namespace {

void restart(Timer& timer, int interval_ms) {
  timer.set_enabled(false);
  timer.set_interval(interval_ms);
  timer.set_enabled(true);
}

// Where the header ends, its empty line included; npos while that has not come.
std::size_t end_of_request(const std::string& text) {
  const std::size_t windows = text.find("\r\n\r\n");
  const std::size_t plain = text.find("\n\n");
  if (windows < plain) return windows + 4;
  return plain == std::string::npos ? plain : plain + 2;
}

}  // namespace

UploadConnection::UploadConnection(EventLoop& loop, std::size_t slot,
                                   UploadConnectionEvents& events, const Behaviour& behaviour)
    : loop_(loop),
      slot_(slot),
      events_(events),
      behaviour_(behaviour),
      deadline_(loop.make_timer(kRequestMs, [this] { on_deadline(); })),
      step_(loop.make_timer(kQuietMs, [this] { on_step(); })) {}

void UploadConnection::take(std::unique_ptr<Socket> socket) {
  release();
  socket_ = std::move(socket);
  socket_->set_events(this);
  phase_ = Phase::request;
  header_arrived_ = false;
  restart(*deadline_, kRequestMs);
}

void UploadConnection::release() {
  deadline_->set_enabled(false);
  step_->set_enabled(false);
  request_.clear();
  message_.clear();
  socket_.reset();
}

std::unique_ptr<Socket> UploadConnection::hand_over() {
  std::unique_ptr<Socket> socket = std::move(socket_);
  release();
  return socket;
}

void UploadConnection::release_with(std::string message) {
  if (!connected()) {
    release();
    return;
  }
  phase_ = Phase::stopping;
  message_ = std::move(message);
  restart(*deadline_, kStopMs);
  restart(*step_, kStopPollMs);
  send_last_message();
}

void UploadConnection::send_header(std::string_view header) {
  socket_->write_alone(header);
  header_ms_ = loop_.now_ms();
}

void UploadConnection::send_common_header(std::string_view header) {
  socket_->write(header);
  header_arrived_ = true;
}

bool UploadConnection::ready() {
  if (!header_arrived_) {
    header_arrived_ =
        loop_.now_ms() - header_ms_ >= kHeaderAloneMs && socket_->unacknowledged() == 0;
  }
  return header_arrived_ && socket_->unsent() == 0;
}

void UploadConnection::on_read(std::string_view data) {
  if (phase_ != Phase::request) return;
  const std::string error = trapped({}, [&] { collect(data); });
  if (error.empty()) return;
  release();
  events_.on_no_request(slot_, error);
}

void UploadConnection::on_disconnect() {
  if (phase_ == Phase::stopping) {
    release();
    return;
  }
  deadline_->set_enabled(false);
  step_->set_enabled(false);
  events_.on_client_gone(slot_);
}

void UploadConnection::on_deadline() {
  const bool waited_for_request = phase_ == Phase::request;
  release();
  if (waited_for_request) events_.on_no_request(slot_, "No response");
}

void UploadConnection::on_step() {
  if (phase_ == Phase::stopping) {
    send_last_message();
  } else {
    answer();
  }
}

// What does not begin as a request is never answered; its time runs out. An offer is looked at.
void UploadConnection::collect(std::string_view data) {
  const std::size_t room = kMaxUploadRequest - request_.size();
  request_.append(data.substr(0, room));
  const bool get =
      request_.starts_with("GET ") || (behaviour_.plain_http && is_http_request(request_));
  const std::size_t end = end_of_request(request_);
  const bool offer = end != std::string::npos && request_.starts_with(kOfferStart);
  if (get && end != std::string::npos) {
    request_.resize(end);
    answer();
  } else if (offer && events_.on_offer(slot_, request_.substr(0, end))) {
    return;
  } else if (data.size() > room) {
    release();
    events_.on_no_request(slot_, "Not accepted");
  } else if (get && request_.find('\n') != std::string::npos) {
    restart(*step_, kQuietMs);
  }
}

void UploadConnection::answer() {
  deadline_->set_enabled(false);
  step_->set_enabled(false);
  phase_ = Phase::transfer;
  const std::string text = std::move(request_);
  request_.clear();
  events_.on_request(slot_, text);
}

void UploadConnection::send_last_message() {
  if (socket_->unacknowledged() > 0) return;
  // The connection ends whether or not the message could be written.
  trapped({}, [this] { socket_->write_alone(message_); });
  release();
}

}  // namespace velmora
