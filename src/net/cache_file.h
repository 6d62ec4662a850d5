// The host cache as a text file of the form of platform/list_file.h. The first line gives the
// number of rows, the second names the fields, then one line per host, row 1 first. What a host is
// known by is kept, not by which connection and over how many hops its last pong came.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "net/host_cache.h"
#include "platform/files.h"

namespace velmora {

inline constexpr std::size_t kMaxCacheFile = std::size_t{16} << 20;
inline constexpr const char* kCacheFile = "Velmora_cache.dat";

std::string cache_text(const HostCache& cache);

// Adds the text's rows to the hosts as they are read. Raises "Input past end of file" when rows are
// missing, "Type mismatch" for a malformed line, "Subscript out of range" for a negative number of
// rows, "Out of memory" beyond 10,000; what was read by then stays.
void read_cache(std::string_view text, std::vector<CacheHost>& hosts);

// "" or "save_cache: " and the error's description.
std::string save_cache(Files& files, const std::string& file_name, const HostCache& cache);

// The same with "load_cache: ". A failed load leaves the rows that were read before the error; a
// file that cannot be read leaves the cache alone.
std::string load_cache(Files& files, const std::string& file_name, HostCache& cache);

// Keeps the file as it is beside it under its name and ".bad". For a file that was not understood,
// before it is replaced; when it cannot be kept it must not be.
std::string keep_cache(Files& files, const std::string& file_name);

}  // namespace velmora
