#include "share/upload_server.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"
#include "share/http_answer.h"

namespace velmora {
namespace {

constexpr int kBacklog = 200;
constexpr int kMostFailures = 10;  // ticks in a row; a slot that only fails does not stay for ever
constexpr std::string_view kOwnClient = "VelMora ";
// A longer stop message could arrive in pieces, which the client would take for bytes of the file.
constexpr std::size_t kMaxStopText = 1024;
// Without a delay the timer ticks in every turn of the loop; when no client has taken anything for
// so long, it slows down, or the machine would be kept busy with waiting.
constexpr std::int64_t kIdleMs = 100;
constexpr int kIdleDelayMs = 10;
// A tick that comes late makes up for those that were due meanwhile, but for no more than these.
constexpr std::int64_t kMostTicksAtOnce = 8;

bool is_file_number(double value, const OneBased<SharedFile>& files) {
  return value >= 1 && value <= static_cast<double>(files.upper_bound()) &&
         value == std::floor(value);
}

// Kept: no protocol version, no blank behind "Content-type:", and always the whole file's size.
std::string reply_header(std::int32_t file_size) {
  return "HTTP 200 OK\r\nServer: Velmora\r\nContent-type:application/binary\r\nContent-length: " +
         std::to_string(file_size) + "\r\n\r\n";
}

// Cut, if need be, before a character of UTF-8.
std::string stop_frame(std::string_view text) {
  if (text.size() > kMaxStopText) {
    std::size_t end = kMaxStopText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    text = text.substr(0, end);
  }
  return "VelMora-Stop: " + std::to_string(text.size()) + "\r\n" + std::string(text);
}

std::int32_t bounded_start(double start) {
  return to_int32(std::clamp(start, 0.0, double{std::numeric_limits<std::int32_t>::max()}));
}

}  // namespace

UploadServer::UploadServer(const Platform& platform, Form& form, SharedIndex& index,
                           ClientNames& names, DebugLog& log, const Behaviour& behaviour)
    : loop_(platform.loop),
      network_(platform.network),
      files_(platform.files),
      form_(form),
      index_(index),
      log_(log),
      behaviour_(behaviour),
      upload_log_(platform, form, names, log),
      list_(upload_slots_, form),
      upload_file_t_(loop_.make_timer(form.speed_upload.position(), [this] { upload_files(); })) {
  form_.lupload.set_source(&list_);
  form_.lupload.on_activate = [this](std::size_t row) { stop_upload(row); };
  form_.speed_upload.on_change = [this] { follow_slider(); };
}

UploadServer::~UploadServer() {
  form_.lupload.set_source(nullptr);
  form_.lupload.on_activate = nullptr;
  form_.speed_upload.on_change = nullptr;
}

void UploadServer::listen(std::uint16_t port) {
  close_listener();
  listener_ = network_.listen(port, kBacklog, *this);
}

void UploadServer::shutdown() {
  close_listener();
  for (std::size_t index = 1; index <= upload_slots_.upper_bound(); ++index) release(index);
  upload_file_t_->set_enabled(false);
}

void UploadServer::refresh() {
  const auto active =
      std::count_if(upload_slots_.begin(), upload_slots_.end(),
                    [](const UploadSlot& slot) { return slot.state != UploadState::none; });
  active_uploads_ = static_cast<std::int16_t>(active);  // kMaxUploadSlots at most
  follow_slider();
  form_.lupload.redraw();
}

// Setting the interval starts it anew, so it is set only when it moved.
void UploadServer::follow_slider() {
  int delay_ms = form_.speed_upload.position();
  if (delay_ms == 0 && loop_.now_ms() - last_sent_ms_ >= kIdleMs) delay_ms = kIdleDelayMs;
  if (upload_file_t_->interval() == delay_ms) return;
  upload_file_t_->set_interval(delay_ms);
  next_tick_ms_ = loop_.now_ms() + delay_ms;
}

void UploadServer::start_ticking() {
  if (upload_file_t_->enabled()) return;
  upload_file_t_->set_enabled(true);
  next_tick_ms_ = loop_.now_ms() + upload_file_t_->interval();
}

// The timer skips what it missed, so they are counted from when each was due; 0 for a tick of the
// timer that an earlier, late one has made up for.
std::int64_t UploadServer::ticks_due() {
  const std::int64_t interval_ms = upload_file_t_->interval();
  const std::int64_t now_ms = loop_.now_ms();
  if (interval_ms == 0) return 1;
  if (now_ms < next_tick_ms_) return 0;
  const std::int64_t ticks = 1 + (now_ms - next_tick_ms_) / interval_ms;
  next_tick_ms_ += ticks * interval_ms;
  return std::min(ticks, kMostTicksAtOnce);
}

void UploadServer::on_accept(std::unique_ptr<Socket> pending) {
  trap(log_, "Connect_in_upload_socket ", [&] { Connect_in_upload_socket(std::move(pending)); });
}

void UploadServer::Connect_in_upload_socket(std::unique_ptr<Socket> pending) {
  const std::size_t index = free_slot();
  if (index == 0) return;  // the pending connection closes
  UploadSlot slot;
  slot.address = pending->peer_address();
  slot.status = "accepting";
  upload_slots_.at(index) = std::move(slot);
  connections_.at(index - 1)->take(std::move(pending));
  form_.lupload.redraw();
}

// The first slot whose connection is released, else a new one; 0 when there may be no more.
std::size_t UploadServer::free_slot() {
  for (std::size_t index = 1; index <= connections_.size(); ++index) {
    if (!connections_[index - 1]->in_use()) return index;
  }
  const std::size_t index = connections_.size() + 1;
  if (index > kMaxUploadSlots) return 0;
  UploadConnectionEvents& events = *this;
  auto connection = std::make_unique<UploadConnection>(loop_, index, events, behaviour_);
  connections_.reserve(index);  // so that the two arrays grow together or not at all
  upload_slots_.grow_to(index);
  connections_.push_back(std::move(connection));
  return index;
}

void UploadServer::on_request(std::size_t slot, const std::string& text) {
  if (!trap(log_, "upload_Read: ", [&] { upload_Read(slot, text); })) release(slot);
  form_.lupload.redraw();
}

void UploadServer::upload_Read(std::size_t index, const std::string& text) {
  if (behaviour_.plain_http && is_http_request(text)) {
    return answer_common_form(index, parse_http_request(text));
  }
  UploadSlot& slot = upload_slots_.at(index);
  const UploadRequest request = parse_upload_request(text);
  if (request.not_a_get) return;
  slot.file_name = request.file_name;
  slot.user_agent = request.user_agent;

  const std::string message = objection(request);
  if (!message.empty()) {
    refuse(index, message);
    return;
  }
  accept_request(slot, request);
  if (slot.file_size == 0) {
    const auto number = static_cast<std::size_t>(slot.file_number);
    refuse(index, "This file: " + index_.shared_files().at(number).name + " no longer exists");
    return;
  }
  start_sending(index);
}

// Why the request does not name a shared file; empty when it does.
std::string UploadServer::objection(const UploadRequest& request) const {
  const auto& shared_files = index_.shared_files();
  const std::string that_filenum = "That filenum (" + decimal_text(request.file_number) + ") ";
  if (!is_file_number(request.file_number, shared_files)) {
    return that_filenum + "is No longer valid!";
  }
  const SharedFile& file = shared_files.at(static_cast<std::size_t>(request.file_number));
  if (!names_file(file, request.file_name)) {
    return that_filenum + "No longer points to the file: " + request.file_name;
  }
  return {};
}

// Kept: an empty file counts as a missing one. A file beyond 32 bits raises "Overflow".
void UploadServer::accept_request(UploadSlot& slot, const UploadRequest& request) {
  const SharedFile& file = index_.shared_files().at(static_cast<std::size_t>(request.file_number));
  slot.file_number = to_int16(request.file_number);
  slot.path = path_on_disk(file);
  std::uint64_t size = 0;
  trapped({}, [&] { size = files_.size(slot.path); });
  slot.file_size = to_int32(static_cast<double>(size));
  slot.range_start = bounded_start(request.range_start);
  slot.end = slot.file_size;
}

void UploadServer::refuse(std::size_t index, const std::string& message) {
  upload_slots_.at(index).status = "Error, sent msg";
  connections_.at(index - 1)->send_message(message);
  release(index);
}

// The same files by the same rules; only what goes over the wire is another text.
void UploadServer::answer_common_form(std::size_t index, const HttpRequest& request) {
  UploadSlot& slot = upload_slots_.at(index);
  slot.common_form = true;
  slot.file_name = request.file.file_name;
  slot.user_agent = request.file.user_agent;
  const auto refuse_with = [&](HttpRefusal why, const std::string& text) {
    refuse(index, http_refusal(why, text, request.head));
  };
  if (!request.understood) {
    return refuse_with(HttpRefusal::bad_request, "That request is not understood.");
  }
  const std::string message = objection(request.file);
  if (!message.empty()) return refuse_with(HttpRefusal::not_found, message);
  accept_request(slot, request.file);
  if (slot.file_size == 0) {
    return refuse_with(HttpRefusal::not_found,
                       "This file: " + slot.file_name + " no longer exists");
  }
  if (full()) {
    const std::string text = "Too many uploads are running, try again later.";
    connections_.at(index - 1)->send_message(http_refusal(HttpRefusal::busy, text, request.head));
    return end_upload(index, "Max, Refused");
  }
  const HttpAnswer answer = http_answer(request, static_cast<std::uint64_t>(slot.file_size));
  if (request.head) {
    connections_.at(index - 1)->send_message(answer.header);
    return end_upload(index, "Header sent");
  }
  if (!answer.has_file) return refuse(index, answer.header);
  slot.range_start = to_int32(static_cast<double>(answer.begin));
  slot.end = to_int32(static_cast<double>(answer.end));
  start_sending(index, answer.header);
}

// Kept: the new connection is not yet counted, so that one upload more than the limit can run.
bool UploadServer::full() const { return val(form_.max_in_upload.text()) < active_uploads_; }

void UploadServer::start_sending(std::size_t index, std::string_view common_header) {
  UploadSlot& slot = upload_slots_.at(index);
  const bool resume = slot.range_start != 0;
  slot.status = resume ? "Resuming an upload" : "Uploading";
  slot.state = resume ? UploadState::resume_pending : UploadState::sending;
  if (full()) {
    end_upload(index, "Max, Refused");
    return;
  }
  upload_log_.log_uploads(slot);
  UploadConnection& connection = *connections_.at(index - 1);
  if (common_header.empty()) {
    connection.send_header(reply_header(slot.file_size));
  } else {
    connection.send_common_header(common_header);
  }
  last_sent_ms_ = loop_.now_ms();
  follow_slider();
  start_ticking();
}

void UploadServer::on_no_request(std::size_t slot, const std::string& status) {
  upload_slots_.at(slot).status = status;
  form_.lupload.redraw();
}

// A transfer is ended by its next tick, which finds the client gone.
void UploadServer::on_client_gone(std::size_t slot) {
  upload_slots_.at(slot).status = "Disconnected";
  if (upload_slots_.at(slot).state == UploadState::none) release(slot);
  form_.lupload.redraw();
}

// Kept: what is no request is nothing, unless offers are taken.
bool UploadServer::on_offer(std::size_t slot, const std::string& text) {
  if (offers_ == nullptr || !offers_->takes_offers()) return false;
  std::unique_ptr<Socket> connection = connections_.at(slot - 1)->hand_over();
  upload_slots_.at(slot).status = "Not accepted";
  trap(log_, "on_offer: ", [&] {
    const auto offer = str_to_offer(text);
    if (!offer || !offers_->take_offer(*offer, connection)) return;
    upload_slots_.at(slot).file_name = offer->name;
    upload_slots_.at(slot).status = "Offered a file";
  });
  form_.lupload.redraw();
  return true;
}

void UploadServer::upload_files() {
  const std::int64_t ticks = ticks_due();
  if (ticks == 0) return;
  bool active = false;
  for (std::size_t index = 1; index <= upload_slots_.upper_bound(); ++index) {
    if (upload_slots_.at(index).state == UploadState::none) continue;
    const bool sent = trap(log_, "upload_files ", [&] { send_packets(index, ticks); });
    UploadSlot& slot = upload_slots_.at(index);
    slot.failures = sent ? 0 : slot.failures + 1;
    if (slot.state == UploadState::none) continue;
    if (slot.failures >= kMostFailures) end_upload(index, "Disconnected");
    active = true;
  }
  if (!active) {
    upload_file_t_->set_enabled(false);
    std::string().swap(packet_);
  }
  follow_slider();
  form_.lupload.redraw();
}

void UploadServer::send_packets(std::size_t index, std::int64_t ticks) {
  UploadSlot& slot = upload_slots_.at(index);
  UploadConnection& connection = *connections_.at(index - 1);
  if (!connection.connected()) {
    // Common programs close as soon as they have what they asked for.
    const bool all = slot.common_form && slot.position == slot.end;
    if (all) count_upload(slot);
    end_upload(index, all ? "Done" : "Client not recieving");
    return;
  }
  if (!slot.file) slot.file = files_.open_for_reading(slot.path);
  if (!connection.ready()) return;
  if (slot.state == UploadState::resume_pending) {
    slot.position = std::min(slot.range_start, slot.end);
    slot.state = UploadState::sending;
  }
  send_packet(index);
  while (--ticks > 0 && may_follow(index)) send_packet(index);
}

// Whether another packet of the same round may leave. The end is never part of a round: it waits
// for a tick that finds everything sent.
bool UploadServer::may_follow(std::size_t index) const {
  const UploadSlot& slot = upload_slots_.at(index);
  return slot.state == UploadState::sending && slot.position != slot.end &&
         connections_.at(index - 1)->has_room(static_cast<std::size_t>(packet_length(slot)));
}

std::int32_t UploadServer::packet_length(const UploadSlot& slot) const {
  return std::min(form_.pack_upload.position(), slot.end - slot.position);
}

void UploadServer::send_packet(std::size_t index) {
  UploadSlot& slot = upload_slots_.at(index);
  if (slot.position == slot.end) {
    count_upload(slot);
    end_upload(index, "Done");
    return;
  }
  const std::int32_t length = packet_length(slot);
  slot.file->read_into(packet_, static_cast<std::uint64_t>(slot.position),
                       static_cast<std::size_t>(length));
  if (packet_.size() < static_cast<std::size_t>(length)) {
    end_upload(index, "Disconnected");  // the file shrank; its client was promised more
    throw PlatformError(Errc::input_past_end);
  }
  connections_.at(index - 1)->send_packet(packet_);
  last_sent_ms_ = loop_.now_ms();
  slot.position += length;
}

// The list may have been scanned anew since; then the number means another file.
void UploadServer::count_upload(const UploadSlot& slot) {
  if (slot.end < slot.file_size) return;  // a part that stops earlier is no whole upload
  const auto number = static_cast<std::size_t>(slot.file_number);
  const auto& shared_files = index_.shared_files();
  if (shared_files.has(number) && path_on_disk(shared_files.at(number)) == slot.path) {
    index_.count_upload(number);
  }
}

void UploadServer::end_upload(std::size_t index, const std::string& status) {
  UploadSlot& slot = upload_slots_.at(index);
  slot.status = status;
  slot.file.reset();
  slot.state = UploadState::none;
  upload_log_.log_uploads(slot);
  release(index);
}

// By a double click; only a transfer whose file is open can be stopped.
void UploadServer::stop_upload(std::size_t index) {
  if (!upload_slots_.has(index) || !upload_slots_.at(index).file) return;
  UploadSlot& slot = upload_slots_.at(index);
  slot.status = "You Stopped";
  slot.file.reset();
  slot.state = UploadState::none;
  UploadConnection& connection = *connections_.at(index - 1);
  if (!slot.common_form && std::string_view(slot.user_agent).starts_with(kOwnClient)) {
    connection.release_with(stop_frame(form_.text_upload.text()));
  } else {
    connection.release();
  }
  upload_log_.log_uploads(slot);
  form_.lupload.redraw();
}

void UploadServer::release(std::size_t index) {
  UploadSlot& slot = upload_slots_.at(index);
  slot.file.reset();
  slot.state = UploadState::none;
  connections_.at(index - 1)->release();
}

}  // namespace velmora
