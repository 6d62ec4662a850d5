#include "transfer/download_request.h"

#include <algorithm>
#include <cstdint>

namespace velmora {

bool can_be_requested(const DownloadRecord& record) {
  const std::string name = record.full_name();
  return std::none_of(name.begin(), name.end(), [](char c) {
    const auto byte = static_cast<std::uint8_t>(c);
    return byte < 0x20 || byte == 0x7F;
  });
}

// Kept: " HTTP:/1.0" with a colon, and the name without any escaping.
std::string download_request(const DownloadRecord& record, const std::string& version,
                             const std::string& upload_port, std::uint64_t again) {
  return "GET /get/" + std::to_string(record.file_index) + "/" + record.full_name() +
         " HTTP:/1.0\r\n" + "User-Agent: VelMora " + version + ":" + upload_port + "\r\n" +
         "Connection: Keep-Alive\r\n" +
         "Range: bytes=" + std::to_string(record.bytes_received - again) + "-" + record.size +
         "\r\n\r\n";
}

}  // namespace velmora
