// The host cache's file as a servent saves it: 1 file and 2 KB a host, names of 29 June 2000.
#pragma once

#include <fmt/format.h>

#include <string>
#include <vector>

namespace velmora::sim {

inline constexpr const char* kCacheFileName = "Velmora_cache.dat";

struct CacheRow {
  std::string address;
  int port = 6346;
  std::string name = "?";
};

// Rows count from 1.
inline std::string cache_row(std::size_t number, const CacheRow& row) {
  return fmt::format("{},\"{}\",{},\"{}\",1,2,#2000-06-30 14:05:00#,#2000-06-29 01:02:03#\r\n",
                     number, row.address, row.port, row.name);
}

inline std::string cache_file(const std::vector<CacheRow>& rows) {
  std::string text = fmt::format(
      "\"Rows in this file:\",{}\r\n\"Format: Row #, IP, Port, DNS, Files, Size, Date Ponged, "
      "Date DNS\"\r\n",
      rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) text += cache_row(i + 1, rows[i]);
  return text;
}

}  // namespace velmora::sim
