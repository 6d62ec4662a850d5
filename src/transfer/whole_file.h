// What an entry of the download list has beside its classic fields while the switch whole_files is
// on: its other sources, when it is tried again, and what is known for certain. Plain data, owned
// by the entry; the source that is used now stands in the entry's own fields. Times are those of
// the event loop's clock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// So many sources an entry has at most, the one in use included.
inline constexpr std::size_t kMaxSources = 16;

struct DownloadSource {
  std::int32_t file_index = 0;
  std::string address;
  std::string port;
  std::string host_name;
  std::string speed;
  std::array<char, 16> servent_guid{};
};

enum class Turn {
  waiting,    // starts as soon as another download may run
  running,    // was handed to the client, which may have ended it since
  failed,     // waits until it is tried again
  paused,     // by the user
  no_source,  // the last source has another file
  done
};

struct WholeFile {
  std::vector<DownloadSource> others;   // in the order in which they are used next
  std::vector<DownloadSource> dropped;  // they have another file; at most kMaxSources
  Turn turn = Turn::waiting;
  bool exact = false;        // the size is the one that a reply told
  bool differs = false;      // the source in use has another file
  std::size_t tried = 0;     // sources since the last pause
  std::size_t pauses = 0;    // since bytes came or the user asked
  std::int64_t due_ms = 0;   // when a failed one is tried again
  int minutes = 0;           // until then, as shown
  std::uint64_t had = 0;     // bytes received when the attempt began
  std::int64_t done_ms = 0;  // when it was found done
};

}  // namespace velmora
