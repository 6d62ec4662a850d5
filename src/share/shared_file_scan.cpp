#include "share/shared_file_scan.h"

#include <string_view>
#include <utility>

#include "media/exact_mpeg.h"
#include "media/mpeg_header.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr std::size_t kFirstBound = 100;
constexpr std::size_t kEnlargeBy = 50;

bool ends_in_mp3(std::string_view name) {
  if (name.size() < 3) return false;
  const std::string_view end = name.substr(name.size() - 3);
  return (end[0] == 'm' || end[0] == 'M') && (end[1] == 'p' || end[1] == 'P') && end[2] == '3';
}

std::string audio_information(Files& files, const std::string& path, DebugLog& log,
                              const Behaviour& behaviour) {
  Mp3Info info;
  trap(log, "Get_mp3_info: ", [&] {
    const std::unique_ptr<File> file = files.open_for_reading(path);
    if (behaviour.exact_audio) return Get_exact_mp3_info(*file, info, log);
    Get_mp3_info(file->read(0, kMpegBytesRead), info, log);
  });
  return '\1' + info.frequency + '\1' + info.bitrate;
}

}  // namespace

std::string without_last_separator(std::string directory) {
  if (!directory.empty() && (directory.back() == '/' || directory.back() == '\\')) {
    directory.pop_back();
  }
  return directory;
}

std::string stored_name(Files& files, const std::string& path, const std::string& name,
                        DebugLog& log, const Behaviour& behaviour) {
  return ends_in_mp3(name) ? name + audio_information(files, path, log, behaviour) : name;
}

SharedFileScan::SharedFileScan(std::vector<std::string> directories, Files& files, DebugLog& log,
                               const Behaviour& behaviour)
    : directories_(std::move(directories)), files_(files), log_(log), behaviour_(behaviour) {
  shared_files_.resize(kFirstBound);
}

bool SharedFileScan::Scan_my_files() {
  if (!ended_ && !trap(log_, "Scan_my_files: ", [this] { step(); })) ended_ = true;
  if (ended_) listing_.reset();
  return !ended_;
}

OneBased<SharedFile> SharedFileScan::take_files() { return std::move(shared_files_); }

void SharedFileScan::step() {
  if (listing_) {
    record_file();
  } else if (next_directory_ < directories_.size()) {
    enlarge();
    enter_directory();
  } else {
    shared_files_.resize(index_);
    total_text_ = std::to_string(total_);
    ended_ = true;
  }
}

// Kept: tested once for each directory, where the records filled never exceed the bound, so that
// the list keeps its first bound and the name after the 100th file ends the scan with an error.
void SharedFileScan::enlarge() {
  if (index_ > shared_files_.upper_bound()) shared_files_.resize(index_ + kEnlargeBy);
}

void SharedFileScan::enter_directory() {
  ++index_;
  directory_ = without_last_separator(directories_[next_directory_++]);
  listing_ = files_.list(directory_.empty() ? "/" : directory_);
  take_next_name();
}

void SharedFileScan::record_file() {
  SharedFile& file = shared_files_.at(index_);
  file.path = directory_;
  const std::string path = directory_ + "/" + file.name;
  file.size = to_int32(static_cast<double>(files_.size(path)));
  total_ = to_int32(static_cast<double>(total_) + file.size);
  file.name = stored_name(files_, path, file.name, log_, behaviour_);
  ++index_;
  take_next_name();
}

void SharedFileScan::take_next_name() {
  const std::optional<std::string> name = listing_->next();
  shared_files_.at(index_).name = name.value_or("");
  if (name) return;
  listing_.reset();
  --index_;
}

}  // namespace velmora
