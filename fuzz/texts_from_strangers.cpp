// Everything that takes apart a stranger's text and needs no servent for it.
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "media/mpeg_header.h"
#include "net/cache_file.h"
#include "platform/error.h"
#include "platform/number.h"
#include "protocol/conversions.h"
#include "share/shared_list_file.h"
#include "share/upload_request.h"
#include "transfer/disk_name.h"
#include "transfer/http_reply.h"
#include "transfer/stop_message.h"

namespace {

class NoLog : public velmora::DebugLog {
  void debug_log(std::string_view) override {}
};

// A text may be refused with the platform's error, and with no other.
template <class Reader>
void read(Reader&& reader) {
  try {
    reader();
  } catch (const velmora::PlatformError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  NoLog log;
  const std::string name = disk_name(text);
  if (name.empty() || name.size() > kMaxDiskName || name.find('/') != std::string::npos ||
      name == "." || name == "..") {
    std::abort();
  }
  Mp3Info info;
  Get_mp3_info(text, info, log);
  Check_IP(text);
  find_stop_message(text);
  read([&] { val(text); });
  read([&] { number(text); });
  read([&] { parse_upload_request(text); });
  read([&] { parse_http_reply(text.substr(0, reply_header_length(text))); });
  read([&] {
    OneBased<SharedFile> files(1000);
    std::int64_t total = 0;
    read_shared_list(text, files, total);
  });
  read([&] {
    std::vector<CacheHost> hosts;
    read_cache(text, hosts);
  });
  return 0;
}
