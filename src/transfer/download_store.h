// The download list as a text file of the form of platform/list_file.h, for the switch whole_files.
// The first line gives the number of entries, the second and third name the fields; then one line
// an entry and, below it, one line for each of its sources, the one in use first. How much of a
// file is there is not kept: its partial file tells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/one_based.h"
#include "transfer/download_record.h"

namespace velmora {

inline constexpr std::size_t kMaxDownloadsFile = std::size_t{64} << 20;
inline constexpr const char* kDownloadsFile = "Velmora_downloads.dat";

// Of the entries that have a WholeFile.
std::string downloads_text(const OneBased<DownloadRecord>& list);

// Adds the text's entries as they are read, at most `most` in all. Raises "Input past end of file"
// when lines are missing, "Type mismatch" for a malformed one, "Out of memory" beyond the most;
// what was read by then stays.
void read_downloads(std::string_view text, std::vector<DownloadRecord>& entries, std::size_t most);

// Each returns "" or "save_downloads: " ("load_downloads: ") and the error's description.
std::string save_downloads(Files& files, const OneBased<DownloadRecord>& list);
// A missing file is an empty one. A failed load leaves the entries that were read before the error.
std::string load_downloads(Files& files, std::vector<DownloadRecord>& entries, std::size_t most);
// Keeps the file as it is beside it under its name and ".bad", before it is replaced.
std::string keep_downloads(Files& files);

}  // namespace velmora
