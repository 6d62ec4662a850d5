// The request with which a download asks a common web server for its file: a path with escapes, a
// version as those servers know it, and the range only where a part is there already.
#pragma once

#include <cstdint>
#include <string>

#include "transfer/download_record.h"

namespace velmora {

struct WebHost {
  std::string name;  // or a dotted address
  std::uint16_t port = 0;
};

std::string standard_request(const DownloadRecord& record, std::uint64_t start, const WebHost& host,
                             const std::string& version, const std::string& upload_port);

}  // namespace velmora
