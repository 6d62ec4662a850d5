// One entry of the download list: the search result it was queued from, and how far it is. Bytes
// received are exact; the single-precision view of them is what the "Done" rule also compares.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "transfer/partial_file.h"
#include "transfer/search_result.h"
#include "transfer/whole_file.h"

namespace velmora {

// What the activity counter is set to whenever data arrives.
inline constexpr std::int32_t kActivityAtData = 32768;

struct DownloadRecord : search_result {
  std::uint64_t bytes_received = 0;
  std::string status;
  std::int16_t state = 0;  // below 1: no transfer is running
  std::int32_t activity = 0;
  std::unique_ptr<PartialFile> file;  // none while no file is open
  bool fetched = false;               // in this run bytes were written
  std::string message;                // what the other side said, if anything
  std::string server;                 // as its reply names it
  std::uint64_t id = 0;               // tells entries that may move apart; 0: it never moves
  std::unique_ptr<WholeFile> whole;   // while the switch whole_files is on

  [[nodiscard]] float bytes_received_single() const;
  [[nodiscard]] std::uint64_t exact_size() const;  // the size text as a number
  [[nodiscard]] std::string full_name() const { return name + "." + extension; }
  // Whether all bytes are there.
  [[nodiscard]] bool complete() const;
};

}  // namespace velmora
