#include "transfer/download_client.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/http_text.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "platform/visible_text.h"
#include "transfer/disk_name.h"
#include "transfer/download_request.h"
#include "transfer/http_reply.h"
#include "transfer/resume_check.h"
#include "transfer/standard_reply.h"
#include "transfer/standard_request.h"
#include "transfer/stop_message.h"

namespace velmora {
namespace {

constexpr std::size_t kMaxLoggedMessage = 500;
constexpr std::size_t kMaxServerName = 255;

}  // namespace

// One element of the `downl` array. It is made once and used again; what belongs to a connection is
// gone when the connection has ended.
class DownloadClient::Element : public SocketEvents {
 public:
  explicit Element(DownloadClient& client) : client_(client) {}

  void on_connect() override { client_.downl_Connect(*this); }
  void on_connect_failed() override {
    socket.reset();
    if (entry != 0) client_.refused(*this);
  }
  void on_read(std::string_view data) override {
    if (entry != 0 && !finishing) client_.downl_Read(*this, data);
  }
  void on_disconnect() override {
    if (entry != 0 && !finishing) return client_.no_more(*this, "Disconnected");
    socket.reset();
  }

  std::size_t entry = 0;    // of the download list; 0 while none is being fetched
  std::uint64_t start = 0;  // the first byte that this connection asked for
  bool lost_bytes = false;  // some came behind the header in its block
  std::uint64_t again = 0;  // bytes before the start that were asked for, to be compared
  ResumeCheck check;
  std::string held;        // bytes that may be the beginning of a stop message
  bool finishing = false;  // waits for its turn to become a finished file
  enum class Push { possible, asked, over } push = Push::possible;  // one for each attempt
  WebHost host;
  // Of a server that is no servent.
  struct {
    bool asked = false;      // in the standard form, after the classic one was refused
    std::string header;      // what has come of it
    bool body = false;       // all that comes are bytes of the file
    std::uint64_t skip = 0;  // of those, how many are there already
  } web;
  std::unique_ptr<Socket> socket;
  std::unique_ptr<Timer> timeout_downl_t;
  std::unique_ptr<Timer> silence;

 private:
  DownloadClient& client_;
};

DownloadClient::DownloadClient(EventLoop& loop, Network& network, Files& files, Form& form,
                               DebugLog& log, DownloadList& downloads, std::string version,
                               PushSender* pushes, const Behaviour& behaviour)
    : loop_(loop),
      network_(network),
      files_(files),
      form_(form),
      log_(log),
      downloads_(downloads),
      version_(std::move(version)),
      pushes_(pushes),
      behaviour_(behaviour),
      downl_(kMaxDownloads),
      farewells_(loop) {}

DownloadClient::~DownloadClient() { *alive_ = false; }

DownloadRecord& DownloadClient::record_of(const Element& element) {
  return downloads_.download_list().at(element.entry);
}

DownloadClient::Element& DownloadClient::free_element() {
  const auto free =
      std::find_if(downl_.begin(), downl_.end(), [](const auto& e) { return e->entry == 0; });
  if (free != downl_.end()) return **free;
  auto element = std::make_unique<Element>(*this);
  downl_.resize(downl_.upper_bound() + 1);
  return *(downl_.at(downl_.upper_bound()) = std::move(element));
}

std::string DownloadClient::connect(std::size_t entry, const std::string& address,
                                    std::int16_t port, const std::string& host_name) {
  DownloadRecord& record = downloads_.download_list().at(entry);
  std::string error = trapped({}, [&] {
    if (!can_be_requested(record)) {
      record.status = "Not accepted";
      downloads_.redraw();
      return;
    }
    Element& element = free_element();
    const bool by_name = form_.connect_dns.checked() && host_name.size() > 2;
    element.host = {by_name ? host_name : address, unsigned_port(port)};
    element.web = {};
    dial(element);
    element.entry = entry;
    element.start = record.bytes_received;
    element.lost_bytes = false;
    element.push = Element::Push::possible;
    // Kept: nothing is compared, unless the switch whole_files is on.
    element.again = record.whole ? std::min<std::uint64_t>(kMaxCompared, element.start) : 0;
    element.check.expect({});
    record.state = 1;
    record.status = "Requesting to Connect";
    record.message.clear();
    downloads_.redraw();
  });
  if (!error.empty()) record.status = error;
  return error;
}

void DownloadClient::dial(Element& element) {
  element.timeout_downl_t =
      loop_.make_timer(kDownloadConnectMs, [this, &element] { timeout_downl_t_Timer(element); });
  element.silence = loop_.make_timer(1000, [this, &element] { silence_Timer(element); });
  element.socket = network_.connect(element.host.name, element.host.port, 0, element);
  element.timeout_downl_t->set_enabled(true);
}

// Behind lost bytes nothing lies where it belongs, so the next resumption asks for all of it again.
void DownloadClient::end(Element& element, const std::string& status) {
  DownloadRecord& record = record_of(element);
  if (element.lost_bytes && !record.complete()) {
    record.bytes_received = std::min(record.bytes_received, element.start);
    if (record.whole && record.file) trapped({}, [&] { record.file->cut(element.start); });
  }
  element.entry = 0;
  if (element.finishing) std::erase(finishing_, &element);
  element.finishing = false;
  element.held.clear();
  element.web = {};
  element.socket.reset();
  element.timeout_downl_t.reset();
  element.silence.reset();
  record.file.reset();
  record.state = 0;
  record.status = status;
  downloads_.redraw();
}

// Held bytes that are all the rest of the file were no message; others are asked for again.
void DownloadClient::no_more(Element& element, const std::string& status) {
  const DownloadRecord& record = record_of(element);
  const bool all =
      record.file && !element.held.empty() &&
      element.held.size() == record.exact_size() - record.file->position() + element.check.left();
  if (all) guarded(element, [&] { write_block(element, std::exchange(element.held, {})); });
  if (element.entry != 0 && !element.finishing) end(element, status);
}

bool DownloadClient::stop(std::size_t entry, const std::string& status) {
  for (const auto& element : downl_) {
    if (element->entry != entry) continue;
    if (element->finishing) return false;
    end(*element, status);
  }
  return true;
}

void DownloadClient::renumber(const std::vector<std::size_t>& place) {
  for (const auto& element : downl_) {
    if (element->entry != 0) element->entry = place.at(element->entry);
  }
}

void DownloadClient::close_all() {
  while (!finishing_.empty()) finish_next();
  for (const auto& element : downl_) {
    if (element->entry != 0) end(*element, "Disconnected");
  }
  farewells_.close_all();
}

void DownloadClient::downl_Connect(Element& element) {
  const std::string error = trapped({}, [&] {
    DownloadRecord& record = record_of(element);
    element.push = Element::Push::over;
    const std::string& upload_port = form_.upport_config.text();
    element.socket->write(element.web.asked
                              ? standard_request(record, element.start - element.again,
                                                 element.host, version_, upload_port)
                              : download_request(record, version_, upload_port, element.again));
    record.status = "Connected";
    downloads_.redraw();
  });
  if (error.empty()) return;
  log_error(log_, "downl_Connect: ", error);
  end(element, error);
}

// Kept: a refused attempt waits for timeout_downl_t, as one that is never answered does.
void DownloadClient::refused(Element& element) { ask_push(element); }

void DownloadClient::timeout_downl_t_Timer(Element& element) {
  if (!ask_push(element)) end(element, "Not accepted");
}

// When the servent cannot be reached, it is asked to come. False: it cannot be, or was already.
bool DownloadClient::ask_push(Element& element) {
  if (!behaviour_.push || pushes_ == nullptr || element.push != Element::Push::possible) {
    return false;
  }
  DownloadRecord& record = record_of(element);
  const std::string_view servent(record.servent_guid.data(), record.servent_guid.size());
  if (!pushes_->ask_push(servent, record.file_index)) return false;
  element.push = Element::Push::asked;
  element.socket.reset();
  element.timeout_downl_t->set_interval(kOfferMs);
  record.status = "Asked to push";
  downloads_.redraw();
  return true;
}

bool DownloadClient::take_offer(const PushOffer& offer, std::unique_ptr<Socket>& connection) {
  const auto waiting = std::find_if(downl_.begin(), downl_.end(), [&](const auto& element) {
    if (element->entry == 0 || element->push != Element::Push::asked) return false;
    const DownloadRecord& record = record_of(*element);
    return record.file_index == offer.file_number &&
           offer.servent == std::string_view(record.servent_guid.data(), kGuidSize);
  });
  if (waiting == downl_.end()) return false;
  Element& element = **waiting;
  element.socket = std::move(connection);
  element.socket->set_events(&element);
  element.timeout_downl_t->set_interval(kDownloadConnectMs);
  downl_Connect(element);
  return true;
}

void DownloadClient::silence_Timer(Element& element) {
  if (--record_of(element).activity > kActivityAtData - kDownloadSilenceS) return;
  no_more(element, "No Data, Disconnecting");
}

void DownloadClient::downl_Read(Element& element, std::string_view block) {
  element.timeout_downl_t->set_enabled(false);
  element.silence->set_enabled(false);  // the 120 s begin anew
  element.silence->set_enabled(true);
  record_of(element).activity = kActivityAtData;
  incomming_download_data(element, block);
}

void DownloadClient::incomming_download_data(Element& element, std::string_view block) {
  guarded(element, [&] { process(element, block); });
}

template <class Body>
void DownloadClient::guarded(Element& element, Body&& body) {
  const std::string error = trapped({}, std::forward<Body>(body));
  if (error.empty()) return;
  log_error(log_, "incomming_download_data: ", error);
  if (element.entry != 0) end(element, error);
}

// The network may deliver a stop message in pieces, which must not be taken for bytes of the file.
void DownloadClient::process(Element& element, std::string_view block) {
  if (take_standard(element, block)) return;
  if (element.held.empty()) return process_data(element, block);
  const std::string whole = std::exchange(element.held, {}).append(block);
  process_data(element, whole);
}

// Kept: a status line with a version is not recognised; with the switch plain_http it is. Servents
// are asked in the classic form, and a server that is none once more in its own.
bool DownloadClient::take_standard(Element& element, std::string_view block) {
  if (element.web.body) {
    write_standard(element, block);
    return true;
  }
  if (!behaviour_.plain_http || record_of(element).file) return false;
  const std::string bytes = std::exchange(element.web.header, {}).append(block);
  const ReplyKind kind = kind_of_reply(bytes);
  if (kind == ReplyKind::classic) {
    process_data(element, bytes);
  } else if (kind == ReplyKind::page) {
    element.web.asked ? refuse(element, bytes) : ask_in_standard_form(element);
  } else if (const std::size_t header = http_header_length(bytes); header > 0) {
    process_standard_header(element, bytes, header);
  } else if (bytes.size() > kMaxStandardHeader) {
    refuse(element, bytes);
  } else {
    element.web.header = bytes;
  }
  return true;
}

void DownloadClient::process_standard_header(Element& element, std::string_view bytes,
                                             std::size_t header) {
  DownloadRecord& record = record_of(element);
  const StandardReply reply = read_standard_reply(
      bytes.substr(0, header), element.start - element.again, record.exact_size());
  if (!reply.refusal.empty() && !element.web.asked) return ask_in_standard_form(element);
  if (!reply.server.empty()) record.server = reply.server.substr(0, kMaxServerName);
  if (!reply.refusal.empty()) {
    record.message = "Received: " + std::string(bytes.substr(0, 75));
    if (reply.file_is_other && record.whole) return end_as_other_file(element);
    if (reply.file_is_other) record.bytes_received = 0;
    return end(element, reply.refusal);
  }
  if (!same_length(element, reply.size)) return end_as_other_file(element);
  record.size = std::to_string(reply.size);
  if (record.whole) record.whole->exact = true;
  // Bytes that are there and were asked for again are compared; none are where all comes anew.
  if (reply.start != element.start - element.again) element.again = 0;
  element.start = reply.start + element.again;
  record.bytes_received = std::min(record.bytes_received, element.start);
  element.web.skip = reply.skip;
  element.web.body = true;
  open_file(element);
  downloads_.redraw();
  write_standard(element, bytes.substr(header));
}

// A stop message is a servent's; here every byte is the file's.
void DownloadClient::write_standard(Element& element, std::string_view bytes) {
  if (element.entry == 0 || element.finishing) return;
  const auto skip =
      static_cast<std::size_t>(std::min<std::uint64_t>(element.web.skip, bytes.size()));
  element.web.skip -= skip;
  bytes.remove_prefix(skip);
  if (!bytes.empty()) write_block(element, bytes);
}

void DownloadClient::ask_in_standard_form(Element& element) {
  element.web = {};
  element.web.asked = true;
  dial(element);
  record_of(element).status = "Requesting to Connect";
  downloads_.redraw();
}

void DownloadClient::process_data(Element& element, std::string_view block) {
  const auto stop = find_stop_message(block);
  if (!stop) {
    const std::size_t begun = record_of(element).file ? begun_stop_message(block) : block.size();
    element.held = block.substr(begun);
    if (begun > 0) process_block(element, block.substr(0, begun));
    return;
  }
  const std::string text(stop->text.substr(0, kMaxDownloadMessage));
  if (stop->begin > 0) process_block(element, block.substr(0, stop->begin));
  // What came before the message may have ended the transfer.
  if (element.entry == 0 || element.finishing) return;
  record_of(element).message = text;
  log_.debug_log("Download stopped by " + record_of(element).address + ": " +
                 escape_control_bytes(std::string_view(text).substr(0, kMaxLoggedMessage)));
  end(element, "Stopped");
}

// Kept: a header is recognised per block, at its start. While the file is open only a block that is
// nothing but a header counts as one again, for a file may hold such a line anywhere. With the
// switch whole_files none does, and what follows the header in its block is of the file.
void DownloadClient::process_block(Element& element, std::string_view block) {
  const std::size_t header = is_reply_header(block) ? reply_header_length(block) : 0;
  const DownloadRecord& record = record_of(element);
  const bool open = record.file != nullptr;
  if (header == 0 && !open) {
    refuse(element, block);
  } else if (record.whole) {
    if (open) return write_block(element, block);
    process_reply(element, block.substr(0, header), block.substr(header));
  } else if (!open || header == block.size()) {
    element.lost_bytes = element.lost_bytes || header < block.size();
    process_header(element, block.substr(0, header));
  } else {
    write_block(element, block);
  }
}

void DownloadClient::refuse(Element& element, std::string_view block) {
  record_of(element).message = "Received: " + std::string(block.substr(0, 75));
  end(element, "No HTTP OK!");
}

void DownloadClient::process_reply(Element& element, std::string_view header,
                                   std::string_view rest) {
  process_header(element, header);
  if (element.entry != 0 && !element.finishing && !rest.empty()) process_data(element, rest);
}

// Kept: file bytes in the same block behind the header are not written.
void DownloadClient::process_header(Element& element, std::string_view header) {
  DownloadRecord& record = record_of(element);
  const HttpReply reply = parse_http_reply(header);
  if (!reply.server.empty()) record.server = reply.server.substr(0, kMaxServerName);
  if (reply.content_length) {
    if (!same_length(element, *reply.content_length)) return end_as_other_file(element);
    record.size = std::to_string(*reply.content_length);
    if (record.whole) record.whole->exact = true;
  }
  if (!reply.content_length && record.exact_size() == 0) return refuse(element, header);

  const std::uint64_t position = record.file ? record.file->position() : element.start;
  if (record.exact_size() < position) throw PlatformError(Errc::input_past_end);
  if (!record.file) open_file(element);
  if (element.entry != 0) downloads_.redraw();
}

// Kept: whatever length the reply tells is the file's. With the switch whole_files it must be that
// of the file of which a part is here.
bool DownloadClient::same_length(const Element& element, std::uint64_t length) {
  const DownloadRecord& record = record_of(element);
  if (!record.whole || element.start == 0) return true;
  if (record.whole->exact) return record.exact_size() == length;
  return to_single(val(record.size)) == to_single(static_cast<double>(length));
}

void DownloadClient::end_as_other_file(Element& element) {
  DownloadRecord& record = record_of(element);
  if (record.whole) record.whole->differs = true;
  record.message = record.address + ":" + record.port + " has another file of this name.";
  log_.debug_log("Download: " + escape_control_bytes(record.message));
  end(element, "Not the same file");
}

// A download that has nothing left to fetch is "Done" without touching a finished file: what still
// is a partial file takes its final name, and otherwise the finished file must be there.
void DownloadClient::open_file(Element& element) {
  DownloadRecord& record = record_of(element);
  const std::string& folder = form_.down_config.text();
  std::string name = disk_name(record.full_name());
  const std::uint64_t on_disk = PartialFile::length_on_disk(files_, folder, name);
  const bool complete = record.exact_size() == element.start;
  if (on_disk < element.start) {
    if (complete && PartialFile::finished_length(files_, folder, name) == element.start) {
      return end_as_done(element);
    }
    record.bytes_received = on_disk;  // the next resumption goes on from what there is
  }
  for (const DownloadRecord& other : downloads_.download_list()) {
    if (other.file && other.file->folder() == folder && other.file->name() == name) {
      throw PlatformError(Errc::file_exists);
    }
  }
  record.file = std::make_unique<PartialFile>(files_, folder, std::move(name), element.start);
  if (element.again > 0) {
    element.check.expect(record.file->before(static_cast<std::size_t>(element.again)));
  }
  if (complete && element.check.left() == 0) finish_soon(element);
}

void DownloadClient::write_block(Element& element, std::string_view block) {
  DownloadRecord& record = record_of(element);
  if (!element.check.agrees(block)) return end_as_other_file(element);
  if (element.check.left() > 0) return;
  const std::uint64_t promised = record.exact_size() - record.file->position();
  record.fetched = true;
  record.file->write(
      block.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(promised, block.size()))));
  record.bytes_received = record.file->position();
  record.status = "Downloading";
  if (record.complete()) finish_soon(element);
  downloads_.redraw();
}

// Making a file last takes the disk its time, so that many that end together take a turn each.
void DownloadClient::finish_soon(Element& element) {
  if (finishing_.empty()) plan_finish();
  finishing_.push_back(&element);
  element.finishing = true;
  element.silence->set_enabled(false);
}

void DownloadClient::plan_finish() {
  loop_.post([this, alive = alive_] {
    if (*alive) finish_next();
  });
}

void DownloadClient::finish_next() {
  if (finishing_.empty()) return;
  Element& element = *finishing_.front();
  finishing_.pop_front();
  guarded(element, [&] { finish(element); });
  if (finishing_.empty() || trap(log_, "incomming_download_data: ", [&] { plan_finish(); })) return;
  finish_next();
}

void DownloadClient::finish(Element& element) {
  DownloadRecord& record = record_of(element);
  record.bytes_received = record.file->position();
  record.file->finish();
  end_as_done(element);
}

void DownloadClient::end_as_done(Element& element) {
  std::unique_ptr<Socket> socket = std::move(element.socket);
  end(element, "Done");
  farewells_.leave(std::move(socket));
}

}  // namespace velmora
