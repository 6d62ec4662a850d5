// The program-wide list of shared files. A record's index is its file number on the wire, good only
// until the next scan or load replaces the whole list. Owned by the composition root; neither scans
// nor reads a file itself.
#pragma once

#include <cstddef>

#include "platform/one_based.h"
#include "share/name_index.h"
#include "share/shared_file.h"

namespace velmora {

class SharedIndex {
 public:
  [[nodiscard]] const OneBased<SharedFile>& shared_files() const { return shared_files_; }
  void replace(OneBased<SharedFile> files);

  // The stored names, by file number.
  [[nodiscard]] const NameIndex& names() const { return names_; }

  // One upload more, at most 32,767 of them. The number must be in the list.
  void count_upload(std::size_t file_number);

 private:
  OneBased<SharedFile> shared_files_{kMaxSharedFiles};
  NameIndex names_;
};

}  // namespace velmora
