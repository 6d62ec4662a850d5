#include "share/library_scan.h"

#include <utility>

#include "platform/number.h"
#include "platform/trap.h"
#include "platform/visible_text.h"
#include "share/file_numbers.h"
#include "share/shared_file_scan.h"

namespace velmora {

LibraryScan::LibraryScan(std::vector<std::string> directories, NamePatterns left_out, Files& files,
                         const SharedIndex& before, DebugLog& log,
                         std::function<void(const std::string& folder)> on_folder,
                         const Behaviour& behaviour)
    : directories_(std::move(directories)),
      left_out_(std::move(left_out)),
      files_(files),
      before_(before),
      log_(log),
      on_folder_(std::move(on_folder)),
      behaviour_(behaviour) {}

bool LibraryScan::Scan_my_files() {
  if (ended_) return false;
  const std::string error = trapped({}, [this] { step(); });
  if (error.empty()) return !ended_;
  // One folder's trouble; what is left of its listing may raise the same again and again.
  sub_folders_.reset();
  names_.reset();
  tell(folder_.path + ": " + error);
  return true;
}

std::size_t LibraryScan::directories_done() const {
  const bool reads = sub_folders_ || names_ || !waiting_.empty();
  return reads ? next_directory_ - 1 : next_directory_;
}

OneBased<SharedFile> LibraryScan::take_files() {
  return numbered(std::move(found_), before_.shared_files());
}

void LibraryScan::step() {
  if (sub_folders_) {
    read_folder_name();
  } else if (names_) {
    read_file_name();
  } else if (!waiting_.empty()) {
    Folder next = std::move(waiting_.front());
    waiting_.pop_front();
    enter(std::move(next));
  } else if (next_directory_ < directories_.size()) {
    add_folder(without_last_separator(directories_[next_directory_++]), 0);
  } else {
    end();
  }
}

void LibraryScan::add_folder(std::string path, std::size_t depth) {
  if (known_.contains(path)) return;
  if (known_.size() == kMaxLibraryFolders || depth > kMaxLibraryDepth) {
    tell(path + ": left out, " +
         (depth > kMaxLibraryDepth
              ? "it lies more than " + std::to_string(kMaxLibraryDepth) + " folders deep"
              : "there are more than " + std::to_string(kMaxLibraryFolders) + " folders"));
    return;
  }
  known_.insert(path);
  waiting_.push_back({std::move(path), depth});
}

void LibraryScan::enter(Folder folder) {
  folder_ = std::move(folder);
  const std::string path = folder_.path.empty() ? "/" : folder_.path;
  on_folder_(path);
  names_ = files_.list(path);
  sub_folders_ = files_.list_folders(path);
}

void LibraryScan::read_folder_name() {
  const auto name = sub_folders_->next();
  if (!name) {
    sub_folders_.reset();
  } else if (!left_out_.fit(*name)) {
    add_folder(folder_.path + "/" + *name, folder_.depth + 1);
  }
}

void LibraryScan::read_file_name() {
  const auto name = names_->next();
  if (!name) {
    names_.reset();
  } else if (!left_out_.fit(*name)) {
    if (found_.size() == kMaxSharedFiles) {
      tell("no more than " + std::to_string(kMaxSharedFiles) + " files can be shared");
      return end();
    }
    const std::string error = trapped({}, [&] { record_file(*name); });
    if (!error.empty()) tell(folder_.path + "/" + *name + ": " + error);
  }
}

// Other servents' lists and answers hold sizes of 32 bits, so a larger file cannot be offered.
void LibraryScan::record_file(const std::string& name) {
  const std::string path = folder_.path + "/" + name;
  const std::uint64_t size = files_.size(path);
  if (size > kMaxSharedFileSize) {
    tell(path + ": left out, it is larger than 2 GiB");
    return;
  }
  SharedFile file;
  file.name = stored_name(files_, path, name, log_, behaviour_);
  file.size = to_int32(static_cast<double>(size));
  file.path = folder_.path;
  found_.push_back(std::move(file));
  total_ += static_cast<std::int64_t>(size);
}

void LibraryScan::end() {
  ended_ = true;
  if (told_ > kMaxScanLines) {
    log_.debug_log("Shared folders: and " + std::to_string(told_ - kMaxScanLines) + " lines more");
  }
  sub_folders_.reset();
  names_.reset();
  waiting_.clear();
  total_text_ = std::to_string(total_);
}

void LibraryScan::tell(const std::string& text) {
  if (++told_ <= kMaxScanLines) log_error(log_, "Shared folders: ", escape_control_bytes(text));
}

}  // namespace velmora
