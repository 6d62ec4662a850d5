// The request with which a download asks for its file, byte for byte.
#pragma once

#include <cstdint>
#include <string>

#include "transfer/download_record.h"

namespace velmora {

// A name with control characters would break the request's lines, so it is never sent.
bool can_be_requested(const DownloadRecord& record);

// `version` is major.minor.revision; `upload_port` the text of this servent's upload port field;
// `again` how many of the bytes received are asked for once more.
std::string download_request(const DownloadRecord& record, const std::string& version,
                             const std::string& upload_port, std::uint64_t again = 0);

}  // namespace velmora
