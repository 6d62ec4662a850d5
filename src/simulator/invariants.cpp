#include "simulator/invariants.h"

#include <fmt/format.h>

#include <functional>
#include <utility>

#include "form/form.h"
#include "net/message_connections.h"
#include "net/routing_table.h"
#include "share/upload_server.h"
#include "simulator/shared_world.h"
#include "transfer/disk_name.h"
#include "transfer/download_list.h"

namespace velmora::simulator {
namespace {

constexpr std::int64_t kFreeTimer_ms = 5000;
constexpr std::size_t kMostLog = 5000;
constexpr std::size_t kMostUnknown = 65535;

std::size_t hash_of(std::string_view data) { return std::hash<std::string_view>()(data); }

}  // namespace

std::string Invariants::check(Servent& servent, const Held& held, std::int64_t now_ms) {
  touched_ = false;
  if (!fault_.empty()) return fault_;
  const ServentParts parts = servent.parts();
  std::string fault = check_connections(parts, now_ms);
  if (fault.empty()) fault = check_transfers(parts, held);
  if (fault.empty()) fault = check_form(servent.form());
  return fault;
}

std::string Invariants::check_closed(const Held& held, bool gone) {
  Held none;
  if (!gone) none.timers = held.timers;  // they go with the servent
  if (held == none) return {};
  return fmt::format("it still holds {} {}", held.text(),
                     gone ? "though it is gone" : "after its shutdown");
}

void Invariants::forget_servent() { closing_since_.clear(); }

std::string Invariants::check_connections(const ServentParts& parts, std::int64_t now_ms) {
  const auto& slots = parts.connections.connection_slots();
  closing_since_.resize(slots.upper_bound() + 1, -1);
  std::size_t opening = 0;
  std::size_t unsent = 0;
  for (std::size_t i = 1; i <= slots.upper_bound(); ++i) {
    const std::int16_t state = slots.at(i).state;
    const bool loaded = parts.connections.loaded(i);
    if (!parts.connections.stands(i) && parts.routes.names(i)) {
      return fmt::format("a routing entry names connection {}, which is gone", i);
    }
    if (loaded != (state >= kOpening)) {
      return fmt::format("slot {} has state {} and {}", i, state,
                         loaded ? "is still loaded" : "is not loaded");
    }
    if (state == kOpening) ++opening;
    if (state != kClosing) closing_since_[i] = -1;
    if (state == kClosing && closing_since_[i] < 0) closing_since_[i] = now_ms;
    if (state == kClosing && now_ms - closing_since_[i] > kFreeTimer_ms) {
      return fmt::format("slot {} is closing since {} ms", i, now_ms - closing_since_[i]);
    }
    const std::size_t one = parts.connections.unsent(i);
    if (one > kMaxUnsentPerSocket) return fmt::format("{} bytes wait for connection {}", one, i);
    unsent += one;
  }
  if (opening > kMaxOpening) return fmt::format("{} connections are opening", opening);
  if (unsent > kMaxUnsentTotal) return fmt::format("{} bytes wait for all connections", unsent);
  return {};
}

// Every open file belongs to a transfer that runs, and who is told "Done" has the bytes.
std::string Invariants::check_transfers(const ServentParts& parts, const Held& held) {
  int open = 0;
  for (const UploadSlot& slot : parts.uploads.upload_slots()) {
    if (slot.file) ++open;
    if (slot.file && slot.state == UploadState::none) return "an ended upload keeps its file open";
  }
  for (const DownloadRecord& record : parts.downloads.download_list()) {
    if (record.file) ++open;
    if (record.file && record.state < 1) return "an ended download keeps its file open";
    if (record.status != "Done") continue;
    const std::string path = path_in(kDownFolder, disk_name(record.full_name()));
    if (done_.contains({path, record.size})) continue;
    if (record.exact_size() != record.bytes_received) {
      return fmt::format("\"{}\" is done with {} of {} bytes", path, record.bytes_received,
                         record.exact_size());
    }
    if (record.exact_size() > 0 && files_.content(path).size() != record.exact_size()) {
      return fmt::format("\"{}\" is done and {} bytes lie there, not {}", path,
                         files_.content(path).size(), record.exact_size());
    }
    done_.insert({path, record.size});
  }
  if (held.files != open)
    return fmt::format("{} files are open for {} transfers", held.files, open);
  return {};
}

std::string Invariants::check_form(Form& form) const {
  if (form.frmDebug.text().size() > kMostLog) return "the debug log is too long";
  if (form.frmUnknown.text().size() > kMostUnknown) return "the unknown window is too long";
  return {};
}

// Another servent's file holds the bytes that follow from its name; the sharer may have cut it.
std::string Invariants::check_finished(const std::string& path) const {
  const std::string name = path.substr(path.rfind('/') + 1);
  if (!is_shared_name(name)) return {};
  const std::string bytes = files_.content(path);
  if (bytes == shared_bytes(name, bytes.size())) return {};
  return fmt::format("\"{}\" has its final name and not the bytes that were shared", path);
}

void Invariants::note(std::string fault) {
  if (fault_.empty()) fault_ = std::move(fault);
  touched_ = true;
}

void Invariants::on_escaped(const std::string& error) {
  if (person_acts_ && error == "Out of memory") return;
  note("an event let an error out: " + error);
}

void Invariants::on_write(std::uint64_t socket, std::string_view data) {
  std::string fault = witness_.written(socket, data);
  if (!fault.empty()) note(std::move(fault));
}

void Invariants::on_saved(const std::string& path, std::string_view data) {
  saved_[path] = hash_of(data);
}

void Invariants::on_loaded(const std::string& path, std::string_view data) {
  const auto known = saved_.find(path);
  if (known == saved_.end() || known->second == hash_of(data)) return;
  note(fmt::format("\"{}\" is not what was saved", path));
}

void Invariants::on_finished(const std::string& folder, const std::string& name) {
  const std::string path = path_in(folder, name);
  finished_.insert(path);
  std::string fault = check_finished(path);
  if (!fault.empty()) note(std::move(fault));
}

}  // namespace velmora::simulator
