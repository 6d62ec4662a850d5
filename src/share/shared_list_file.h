// The shared list as a text file of the form of platform/list_file.h. The first line gives the
// number of rows, the second names the fields, then one line per file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "share/shared_index.h"

namespace velmora {

inline constexpr std::size_t kMaxSharedListFile = std::size_t{16} << 20;
inline constexpr const char* kSharedListFile = "Velmora_shared.dat";

std::string shared_list_text(const OneBased<SharedFile>& files);

// Adds the text's rows to the list as they are read and their sizes to `total`. Raises "Input past
// end of file" when rows are missing, "Type mismatch" for a malformed line, "Subscript out of
// range" for a negative number of rows; what was read by then stays.
void read_shared_list(std::string_view text, OneBased<SharedFile>& files, std::int64_t& total);

// "" or "save_shared: " and the error's description.
std::string save_shared(Files& files, const std::string& file_name, const SharedIndex& index);

// The same with "load_shared: "; the total size in bytes as decimal text is set on success only. A
// failed load leaves the list as far as it was filled; one that cannot be read leaves it alone.
std::string load_shared(Files& files, const std::string& file_name, SharedIndex& index,
                        std::string& total);

}  // namespace velmora
