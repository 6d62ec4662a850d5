#include "net/cache_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/error.h"
#include "platform/list_file.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr std::size_t kShortestRow = 40;  // bytes: `1,"",0,"",0,0,#2000-06-30#,#2000-06-30#`

// Pongs tell whole kilobytes; a fraction from elsewhere comes back as it was.
std::string size_text(float size) {
  return std::trunc(size) == size ? decimal_text(size) : fmt::format("{}", size);
}

CacheHost read_row(ListFileReader& reader) {
  CacheHost host;
  reader.number_field();  // the file's own row number counts for nothing
  reader.comma();
  host.address = reader.string_field();
  reader.comma();
  host.port = to_port(reader.number_field());
  reader.comma();
  host.host_name = reader.string_field();
  if (host.host_name.empty()) host.host_name = "?";
  reader.comma();
  host.files = to_int16(reader.number_field());
  reader.comma();
  host.size = to_single(reader.number_field());
  reader.comma();
  host.date_ponged = reader.date_field();
  reader.comma();
  host.date_dns = reader.date_field();
  reader.line_end();
  return host;
}

}  // namespace

std::string cache_text(const HostCache& cache) {
  std::string text = "\"Rows in this file:\"," + std::to_string(cache.rows());
  text += kListLineEnd;
  text += "\"Format: Row #, IP, Port, DNS, Files, Size, Date Ponged, Date DNS\"";
  text += kListLineEnd;
  for (std::size_t row = 1; row <= cache.rows(); ++row) {
    const CacheHost& host = cache.row(row);
    text += std::to_string(row) + ',';
    put_quoted(text, host.address);
    text += ',' + std::to_string(host.port) + ',';
    put_quoted(text, host.host_name);
    text += ',' + std::to_string(host.files) + ',' + size_text(host.size) + ',';
    put_date(text, host.date_ponged);
    text += ',';
    put_date(text, host.date_dns);
    text += kListLineEnd;
  }
  return text;
}

void read_cache(std::string_view text, std::vector<CacheHost>& hosts) {
  ListFileReader reader(text);
  reader.string_field();
  reader.comma();
  const std::int32_t rows = to_int32(reader.number_field());
  if (rows < 0) throw PlatformError(Errc::subscript_out_of_range);
  reader.line_end();
  reader.string_field();
  reader.line_end();
  // Grown by what is there, never by what the file claims alone.
  hosts.reserve(hosts.size() + std::min({static_cast<std::size_t>(rows), kMaxCacheHosts,
                                         text.size() / kShortestRow}));
  for (std::int32_t row = 1; row <= rows; ++row) {
    CacheHost host = read_row(reader);
    if (hosts.size() >= kMaxCacheHosts) throw PlatformError(Errc::out_of_memory);
    hosts.push_back(std::move(host));
  }
}

std::string save_cache(Files& files, const std::string& file_name, const HostCache& cache) {
  return trapped("save_cache: ", [&] { files.save(file_name, cache_text(cache)); });
}

std::string load_cache(Files& files, const std::string& file_name, HostCache& cache) {
  return trapped("load_cache: ", [&] {
    const std::string text = files.read_whole(file_name, kMaxCacheFile);
    std::vector<CacheHost> hosts;
    try {
      read_cache(text, hosts);
    } catch (...) {
      cache.replace(std::move(hosts));
      throw;
    }
    cache.replace(std::move(hosts));
  });
}

std::string keep_cache(Files& files, const std::string& file_name) {
  return trapped("save_cache: ", [&] {
    try {
      files.save(file_name + ".bad", files.read_whole(file_name, kMaxCacheFile));
    } catch (const PlatformError& error) {
      if (error.code() != Errc::path_not_found) throw;  // nothing is there to be kept
    }
  });
}

}  // namespace velmora
