// A scan of the shared directories as who runs it sees it: done in steps so that the loop turns
// between them, with a list of its own that it gives away at the end.
#pragma once

#include <cstddef>
#include <string>

#include "platform/one_based.h"
#include "share/shared_file.h"

namespace velmora {

class FileScan {
 public:
  virtual ~FileScan() = default;

  // The next step: one directory opened or one file recorded. Returns false when the scan has
  // ended. Errors are told in the debug log.
  virtual bool Scan_my_files() = 0;

  // How far it is.
  [[nodiscard]] virtual std::size_t files_recorded() const = 0;
  [[nodiscard]] virtual const std::string& directory() const = 0;  // the last entered
  [[nodiscard]] virtual std::size_t directories_done() const = 0;  // of those that the user typed
  [[nodiscard]] virtual std::size_t directories() const = 0;

  // Bytes of all files as decimal text; empty after an error that ended the scan.
  [[nodiscard]] virtual const std::string& total_text() const = 0;
  virtual OneBased<SharedFile> take_files() = 0;
};

}  // namespace velmora
