// The file of one download while it is being fetched: its name on disk with ".download" behind it,
// inside the folder that was the download directory when it was opened. It is written from the
// start that the request asked for, never truncated on opening, never with a hole; destroying it
// closes it and leaves it for the next resumption. Positions count from 0.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace velmora {

class PartialFile {
 public:
  // `name` is one clean directory entry. Raises the platform's error, and "Input past end of file"
  // when what lies on disk is shorter than the start; no file is made for that.
  PartialFile(Files& files, std::string folder, std::string name, std::uint64_t start);

  // How much of it lies on disk; 0 when there is none. Raises the platform's error.
  static std::uint64_t length_on_disk(Files& files, const std::string& folder,
                                      const std::string& name);
  // The same for the file under its final name.
  static std::uint64_t finished_length(Files& files, const std::string& folder,
                                       const std::string& name);
  // Deletes the partial file, if there is one; never the finished one. Raises the platform's error.
  static void remove(Files& files, const std::string& folder, const std::string& name);

  [[nodiscard]] const std::string& folder() const { return folder_; }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::uint64_t position() const { return position_; }

  // At most so many bytes that lie before the position.
  [[nodiscard]] std::string before(std::size_t most) const;

  void write(std::string_view data);
  // Drops what lies behind the length.
  void cut(std::uint64_t length);
  // Cuts the file at the position, closes it and gives it its final name. A file of that name is
  // never replaced: "File exists", and the partial file stays.
  void finish();

 private:
  Files& files_;
  std::string folder_;
  std::string name_;
  std::uint64_t position_;
  std::unique_ptr<File> file_;
};

}  // namespace velmora
