#include "network_model.h"

#include <algorithm>

namespace velmora::model {
namespace {

constexpr std::string_view kHello = "GNUTELLA CONNECT/0.4\n\n";
constexpr std::string_view kWelcome = "GNUTELLA OK\n\n";
constexpr std::int64_t kFiveSeconds = 5'000'000;
constexpr std::int64_t kConnectTime = 4'000'000;
constexpr std::int64_t kRecount = 500'000;
constexpr std::size_t kDescriptorsATurn = 256;
constexpr std::size_t kMostComplaints = 20;

std::string whole(double number) { return std::to_string(static_cast<long long>(number)); }

std::string pair(double in, double out) { return whole(in) + " / " + whole(out); }

std::string hex(char byte) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  const unsigned value = static_cast<unsigned char>(byte);
  return {kDigits[value >> 4], kDigits[value & 15]};
}

std::string hex_start(std::string_view bytes) {
  std::string text;
  for (const char c : bytes.substr(0, 48)) text += hex(c);
  return text + " (" + std::to_string(bytes.size()) + " bytes)";
}

// A text from the network as it stands in a debug line: control bytes escaped.
std::string one_line(const std::string& text) {
  const auto is = [&](std::size_t i, unsigned first, unsigned last) {
    const unsigned value = i < text.size() ? static_cast<unsigned char>(text[i]) : 256;
    return value >= first && value <= last;
  };
  std::string line;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool pair = is(i, 0xC2, 0xC2) && is(i + 1, 0x80, 0x9F);
    if (pair) line += "\\x" + hex(text[i++]);
    line += pair || is(i, 0, 31) || is(i, 127, 127) ? "\\x" + hex(text[i]) : text.substr(i, 1);
  }
  return line;
}

// "address:port" as a debug line shows it.
std::string spoken(const std::string& peer) {
  const std::size_t colon = peer.find(':');
  return peer.substr(0, colon) + " on port: " + peer.substr(colon + 1);
}

}  // namespace

NetworkModel::NetworkModel(Settings settings)
    : settings_(std::move(settings)), next_recount_(settings_.started_us + kRecount) {
  settings_.identity.guid = guid_at(settings_.started_us);
}

void NetworkModel::replay(const std::vector<sim::TranscriptEntry>& transcript,
                          const std::vector<PersonAct>& acts, Time end_us) {
  auto next = acts.begin();
  for (std::size_t i = 0; i < transcript.size(); ++i) {
    for (; next != acts.end() && next->position <= i; ++next) act(*next);
    if (transcript[i].host == settings_.identity.address) happen(transcript[i]);
  }
  for (; next != acts.end(); ++next) act(*next);
  run_timers(end_us);
  for (std::size_t i = 1; i < slots_.size(); ++i) {
    if (!slots_[i].unwritten.empty()) {
      complain("never written on " + std::to_string(i) + ": " + hex_start(slots_[i].unwritten));
    }
  }
}

// ---- what a person does ----

void NetworkModel::act(const PersonAct& act) {
  run_timers(act.time_us);
  switch (act.kind) {
    case PersonAct::more:
      press_more(act.time_us);
      break;
    case PersonAct::search:
      start_search(act.text, act.time_us);
      break;
    case PersonAct::leave:
      leave(act.row, act.time_us);
      break;
  }
}

void NetworkModel::press_more(Time now) {
  const std::size_t highest = slots_.size() - 1;
  const auto wrapped = [&](std::size_t cursor) { return cursor > highest ? 1 : cursor; };
  if (ping_cursor_ == 0) ping_cursor_ = 1;
  if (ping_cursor_ > highest || slots_[ping_cursor_].state < 1) ++ping_cursor_;
  ping_cursor_ = wrapped(ping_cursor_);
  for (std::size_t i = ping_cursor_; i <= highest; ++i) {
    if (!connected(i)) continue;
    const std::string guid = guid_at(now);
    if (look_up(guid, {.guid = guid, .connection = i, .function = 0, .ours = true})) {
      log_.emplace_back("Error: send_ping:  Re-Using a GUID?");
    }
    write(i, encode({.guid = guid, .function = 0, .ttl = settings_.identity.ttl}));
    counters_.my_pings_out += 1;
    ping_cursor_ = wrapped(i + 1);
    return;
  }
}

void NetworkModel::start_search(const std::string& text, Time now) {
  const std::string guid = guid_at(now);
  for (std::size_t i = 1; i < slots_.size(); ++i) {
    if (!connected(i)) continue;
    if (look_up(guid, {.guid = guid, .connection = i, .function = 128, .ours = true})) {
      log_.emplace_back("Send_query:  Re-Using a GUID?");
    }
    write(i, query(settings_.identity, guid, text));
  }
}

void NetworkModel::leave(std::size_t index, Time now) {
  if (index >= slots_.size() || slots_[index].state < 1) return;
  index_of_.erase(slots_[index].socket);
  freed_at_[slots_[index].socket] = now;
  close(index, now);
}

// ---- what the network does ----

void NetworkModel::happen(const sim::TranscriptEntry& event) {
  run_timers(event.time_us);
  const std::string& kind = event.kind;
  if (kind == "connecting") return open(event, false);
  if (kind == "accepted") return open(event, true);
  if (kind == "closed") return closed(event);
  const auto known = index_of_.find(event.socket);
  if (known == index_of_.end()) {
    if (kind != "listen") complain(kind + " on a socket that should be gone");
    return;
  }
  const std::size_t index = known->second;
  Slot& slot = slots_[index];
  if ((kind == "connected" || kind == "failed") && event.time_us > slot.opened_at + kConnectTime) {
    complain("waited too long for " + slot.peer);
  }
  if (kind == "connected") {
    slot.peer = event.peer;
    write(index, std::string(kHello));
  } else if (kind == "failed") {
    slot.timeout_at.reset();
    close(index, event.time_us);
    log_.push_back("Time-out on sock: " + std::to_string(index));
  } else if (kind == "disconnected") {
    close(index, event.time_us);
  } else if (kind == "read") {
    read(index, event);
  } else if (kind == "write") {
    written(index, event);
  } else if (kind == "reading on") {
    while (!slot.rest.empty()) cut(index, std::exchange(slot.rest, {}));
  }
}

void NetworkModel::open(const sim::TranscriptEntry& event, bool incoming) {
  std::size_t index = 1;
  while (index < slots_.size() && slots_[index].state >= 1) ++index;
  if (index == slots_.size()) slots_.emplace_back();
  slots_[index] = {.state = 1,
                   .incoming = incoming,
                   .socket = event.socket,
                   .peer = event.peer,
                   .opened_at = event.time_us,
                   .timeout_at = event.time_us + kFiveSeconds};
  index_of_[event.socket] = index;
  if (incoming && settings_.max_in <= count_in_) {
    ++refused_;
    free(index, event.time_us);
  }
}

void NetworkModel::read(std::size_t index, const sim::TranscriptEntry& event) {
  Slot& slot = slots_[index];
  counters_.bytes_in += static_cast<double>(event.data.size());
  const bool hello = event.data == kHello;
  if (hello || event.data == kWelcome) {
    if (hello) write(index, std::string(kWelcome));
    slot.state = 2;
    slot.sent = slot.received = slot.dropped = 0;
    slot.ticks = 0;
    log_.push_back(std::string(hello ? "Connected IN to: " : "Connected OUT to: ") +
                   spoken(slot.peer));
  } else if (event.data.starts_with("GET ")) {
    log_.push_back("Request a file of mine on msg port: " + one_line(event.data));
  } else {
    if (slot.timeout_at) slot.timeout_at = event.time_us + kFiveSeconds;
    slot.ticks = 0;
    if (event.data.size() < kHeaderBytes) {
      log_.emplace_back("Format_in_data: data < 23 bytes, dropping");
    } else {
      cut(index, event.data);
    }
  }
}

void NetworkModel::written(std::size_t index, const sim::TranscriptEntry& event) {
  Slot& slot = slots_[index];
  while (slot.unwritten.size() < event.data.size() && resume_any()) {
  }
  if (!slot.unwritten.starts_with(event.data)) {
    complain("wrote on " + std::to_string(index) + ": " + hex_start(event.data) +
             " instead of: " + hex_start(slot.unwritten));
  }
  slot.unwritten.erase(0, event.data.size());
}

void NetworkModel::closed(const sim::TranscriptEntry& event) {
  const auto freed = freed_at_.find(event.socket);
  if (freed == freed_at_.end()) {
    complain("closed a socket that should stand");
  } else if (freed->second != event.time_us) {
    complain("closed a socket " + std::to_string(event.time_us - freed->second) + " us late");
  }
}

// ---- time ----

// Every timer due by then, the earliest first; at one moment a timer comes before the network.
void NetworkModel::run_timers(Time until) {
  for (;;) {
    Time due = until + 1;
    std::size_t index = 0;
    for (std::size_t i = 1; i < slots_.size(); ++i) {
      for (const auto& at : {slots_[i].timeout_at, slots_[i].free_at}) {
        if (at && *at < due) {
          due = *at;
          index = i;
        }
      }
    }
    recount_until(due - 1);
    if (index == 0) break;
    if (slots_[index].timeout_at == due) {
      tick(index, due);
    } else {
      free(index, due);
    }
  }
  now_ = until;
}

void NetworkModel::tick(std::size_t index, Time now) {
  Slot& slot = slots_[index];
  slot.timeout_at = now + kFiveSeconds;
  if (slot.state == 2) {
    if (++slot.ticks < 5) return;
    ++fallen_silent_;
  } else if (slot.state != 1) {
    return;
  }
  slot.timeout_at.reset();
  close(index, now);
}

void NetworkModel::recount_until(Time now) {
  for (; next_recount_ <= now; next_recount_ += kRecount) {
    count_in_ =
        static_cast<std::size_t>(std::count_if(slots_.begin(), slots_.end(), [](const Slot& slot) {
          return slot.state == 2 && slot.incoming;
        }));
  }
}

void NetworkModel::close(std::size_t index, Time now) {
  Slot& slot = slots_[index];
  slot.state = 255;
  slot.rest.clear();
  if (!slot.free_at) slot.free_at = now + kFiveSeconds;
  for (Seen& seen : ring_) {
    if (seen.connection == index) {
      seen.guid.assign(16, ' ');
      seen.connection = 0;
    }
  }
}

void NetworkModel::free(std::size_t index, Time now) {
  close(index, now);
  Slot& slot = slots_[index];
  slot.state = -1;
  slot.timeout_at.reset();
  slot.free_at.reset();
  index_of_.erase(slot.socket);
  freed_at_.emplace(slot.socket, now);
}

// ---- descriptors ----

void NetworkModel::cut(std::size_t index, std::string_view chunk) {
  for (std::size_t count = 1; chunk.size() >= kHeaderBytes; ++count) {
    if (count > kDescriptorsATurn) {
      slots_[index].rest = chunk;
      ++postponed_;
      return;
    }
    counters_.messages += 1;
    slots_[index].received += 1;
    const Descriptor header = decode(chunk);
    if (header.length > kLongestPayload) {
      log_.push_back("Format_in_data: Bad header length, Drop " + std::to_string(chunk.size()) +
                     " Bytes!");
      return;
    }
    dispatch(index, header, chunk);
    chunk.remove_prefix(std::min(chunk.size(), kHeaderBytes + header.length));
  }
}

bool NetworkModel::resume_any() {
  for (std::size_t i = 1; i < slots_.size(); ++i) {
    if (slots_[i].rest.empty()) continue;
    cut(i, std::exchange(slots_[i].rest, {}));
    return true;
  }
  return false;
}

void NetworkModel::dispatch(std::size_t index, const Descriptor& header, std::string_view data) {
  const std::string_view payload = data.substr(kHeaderBytes, header.length);
  bool fits = true;
  switch (header.function) {
    case 0:
      fits = header.length == 0;
      if (fits) got_ping(index, header);
      break;
    case 1:
      fits = header.length == 14;
      if (fits) got_pong(index, header, payload);
      break;
    case 64:
      fits = header.length == 26;
      if (fits) counters_.pushes_in += 1;
      break;
    case 128:
      fits = header.length <= 257;
      if (fits) got_query(index, header, payload);
      break;
    case 129:
      read_query_hit(header.length, data, log_);
      read_query_hit(header.length, payload, log_);
      counters_.hits_in += 1;
      break;
    default:
      fits = false;
      counters_.unknown += 1;
  }
  if (!fits) slots_[index].dropped += 1;
}

void NetworkModel::got_ping(std::size_t index, const Descriptor& header) {
  counters_.pings_in += 1;
  const auto seen = look_up(header.guid, {.guid = header.guid, .connection = index, .function = 0});
  if (!seen) {
    counters_.pings_out += static_cast<float>(forward(index, header, {}));
    write(index, pong(settings_.identity, header.guid));
    counters_.my_pongs_out += 1;
  } else if (seen->function == 0) {
    counters_.my_pings_in += 1;
  }
}

void NetworkModel::got_pong(std::size_t index, const Descriptor& header, std::string_view payload) {
  counters_.pongs_in += 1;
  read_pong(payload, log_);
  const auto seen = look_up(header.guid, {.guid = header.guid, .connection = index, .function = 1});
  if (!seen || seen->function != 0) {
    counters_.route_errors += 1;
  } else if (seen->ours) {
    counters_.my_pongs_in += 1;
  } else {
    forward(index, header, payload, seen->connection);  // an empty entry names nobody
    counters_.pongs_out += 1;
  }
}

void NetworkModel::got_query(std::size_t index, const Descriptor& header,
                             std::string_view payload) {
  // A payload without room for speed and end has no text at all, which is an error.
  if (header.length < 3) {
    log_.push_back("got_query: Invalid procedure call or argument");
    return;
  }
  const std::string hit =
      answer(settings_.identity, header.guid, query_text(header.length, payload), log_);
  if (!hit.empty()) write(index, hit);
  forward(index, header, payload);
  counters_.queries_in += 1;
}

std::size_t NetworkModel::forward(std::size_t from, Descriptor header, std::string_view payload,
                                  std::optional<std::size_t> only) {
  header.hops = std::min(header.hops + 1, 255U);
  if (header.ttl > 0) header.ttl -= 1;
  if (header.ttl > 50) header.ttl = settings_.identity.ttl;
  if (header.ttl == 0 || header.hops > settings_.identity.ttl) {
    counters_.dropped += 1;
    return 0;
  }
  const std::string bytes = encode(header) + std::string(payload);
  std::size_t copies = 0;
  for (std::size_t i = 1; i < slots_.size(); ++i) {
    if (!connected(i) || (only ? i != *only : i == from)) continue;
    write(i, bytes);
    slots_[i].sent += 1;
    ++copies;
  }
  return copies;
}

std::optional<NetworkModel::Seen> NetworkModel::look_up(const std::string& guid,
                                                        const Seen& otherwise) {
  const auto found =
      std::find_if(ring_.begin(), ring_.end(), [&](const Seen& seen) { return seen.guid == guid; });
  if (found != ring_.end()) return *found;
  ring_[ring_position_] = otherwise;
  ring_position_ = (ring_position_ + 1) % ring_.size();
  return std::nullopt;
}

// ---- small things ----

void NetworkModel::write(std::size_t index, const std::string& bytes) {
  counters_.bytes_out += static_cast<double>(bytes.size());
  slots_[index].unwritten += bytes;
}

std::string NetworkModel::guid_at(Time now) const {
  const Time second = settings_.clock_at_zero_s + now / 1'000'000;
  return (std::to_string(second / 3600 % 24) + std::to_string(second % 60) + "1234567890123456")
      .substr(0, 16);
}

bool NetworkModel::connected(std::size_t index) const { return slots_[index].state == 2; }

void NetworkModel::complain(const std::string& what) {
  if (complaints_.size() < kMostComplaints) {
    complaints_.push_back("at " + std::to_string(now_) + " us: " + what);
  }
}

std::vector<std::pair<std::string, std::string>> NetworkModel::labels() const {
  const Counters& c = counters_;
  return {{"net_stat", whole(c.messages)},
          {"bytein_stat", whole(c.bytes_in)},
          {"byteout_stat", whole(c.bytes_out)},
          {"drop_stat", whole(c.dropped)},
          {"route_stat", whole(c.route_errors)},
          {"ping_stat", pair(c.pings_in, c.pings_out)},
          {"myping_stat", pair(c.my_pings_in, c.my_pings_out)},
          {"pong_stat", pair(c.pongs_in, c.pongs_out)},
          {"mypong_stat", pair(c.my_pongs_in, c.my_pongs_out)},
          {"search_stat", pair(c.queries_in, 0)},
          {"reply_stat", pair(c.hits_in, 0)},
          {"push_stat", pair(c.pushes_in, 0)},
          {"unknown_stat", whole(c.unknown)}};
}

std::vector<std::string> NetworkModel::host_counts() const {
  std::vector<std::string> counts;
  for (std::size_t i = 1; i < slots_.size(); ++i) {
    counts.push_back(whole(slots_[i].sent) + "/" + whole(slots_[i].received) + "/" +
                     whole(slots_[i].dropped));
  }
  return counts;
}

}  // namespace velmora::model
