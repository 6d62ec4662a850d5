// The program-wide list of shared files. A record's index is its file number on the wire, good only
// until the next scan or load replaces the whole list. Owned by the composition root; neither scans
// nor reads a file itself.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/one_based.h"
#include "share/search_text.h"
#include "share/shared_file.h"

namespace velmora {

class SharedIndex {
 public:
  [[nodiscard]] const OneBased<SharedFile>& shared_files() const { return shared_files_; }
  void replace(OneBased<SharedFile> files);

  // Whether every word occurs in the stored name. The number must be in the list.
  [[nodiscard]] bool matches(std::size_t file_number, const std::vector<SearchText>& words) const;

  // One upload more, at most 32,767 of them. The number must be in the list.
  void count_upload(std::size_t file_number);

 private:
  OneBased<SharedFile> shared_files_{kMaxSharedFiles};
  OneBased<SearchText> names_{kMaxSharedFiles};  // same index
};

}  // namespace velmora
