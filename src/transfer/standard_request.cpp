#include "transfer/standard_request.h"

#include <fmt/format.h>

#include "platform/http_text.h"

namespace velmora {

std::string standard_request(const DownloadRecord& record, std::uint64_t start, const WebHost& host,
                             const std::string& version, const std::string& upload_port) {
  const std::string name = record.extension.empty() ? record.name : record.full_name();
  std::string text = fmt::format("GET /get/{}/{} HTTP/1.1\r\nHost: {}", record.file_index,
                                 with_escapes(name), host.name);
  if (host.port != 80) text += fmt::format(":{}", host.port);
  text += fmt::format("\r\nUser-Agent: VelMora {}:{}\r\n", version, upload_port);
  if (start > 0) text += fmt::format("Range: bytes={}-\r\n", start);
  return text + "Connection: close\r\n\r\n";
}

}  // namespace velmora
