#include "transfer/download_record.h"

#include "platform/number.h"
#include "transfer/http_reply.h"

namespace velmora {

float DownloadRecord::bytes_received_single() const {
  return to_single(static_cast<double>(bytes_received));
}

std::uint64_t DownloadRecord::exact_size() const {
  const double value = val(size);
  if (!(value >= 1)) return 0;
  return value < kMaxFileSize ? static_cast<std::uint64_t>(value)
                              : static_cast<std::uint64_t>(kMaxFileSize);
}

// Kept: sizes are compared in single precision, which agrees too early above 16 MiB; so the exact
// counts must agree as well.
bool DownloadRecord::complete() const {
  const bool single_precision_agrees = !(to_single(val(size)) > bytes_received_single());
  return single_precision_agrees && exact_size() == bytes_received;
}

}  // namespace velmora
