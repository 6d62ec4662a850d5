#include "platform/uv/uv_platform.h"

#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/uv/console_screen.h"
#include "platform/uv/system_random.h"
#include "platform/uv/uv_control_channel.h"
#include "platform/uv/uv_directory.h"
#include "platform/uv/uv_dns_client.h"
#include "platform/uv/uv_files.h"
#include "platform/uv/uv_folder_watcher.h"
#include "platform/uv/uv_local_services.h"
#include "platform/uv/uv_network.h"

namespace velmora::uv {
namespace {

constexpr int kLastBytesMs = 1000;
constexpr rlim_t kDescriptorsWanted = 16'384;

// The usual 1024 are fewer than the connections that a flood of upload requests may take.
void ask_for_descriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= kDescriptorsWanted) return;
  limit.rlim_cur = std::min(limit.rlim_max, kDescriptorsWanted);
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

struct UvPlatform::Parts {
  Parts(const std::string& profile, const std::string& listen_address)
      : files(profile),
        network(loop, listen_address),
        control(loop, profile),
        dns(loop, listen_address),
        folders(loop, profile) {}

  UvLoop loop;  // outlives what runs on it
  UvFiles files;
  UvNetwork network;
  UvControlChannel control;
  UvDnsClient dns;
  UvLocalServices local_services{loop};
  UvFolderWatcher folders;
  ConsoleScreen screen;
  SystemRandom random;
};

UvPlatform::UvPlatform(const std::string& profile, const std::string& listen_address)
    : parts_(std::make_unique<Parts>(profile, listen_address)) {
  ask_for_descriptors();
}

UvPlatform::~UvPlatform() {
  parts_->control.close();
  parts_->loop.run_until(
      [this] { return !parts_->network.parting() && !parts_->control.parting(); }, kLastBytesMs);
}

Platform UvPlatform::platform() {
  Parts& p = *parts_;
  return {p.loop,    p.network, p.files,  p.screen,          p.screen,  p.screen,
          p.control, p.dns,     p.random, &p.local_services, &p.folders};
}

UvLoop& UvPlatform::loop() { return parts_->loop; }

void UvPlatform::make_folder(const std::string& path) {
  try {
    make_folders(path);
  } catch (const PlatformError& error) {
    throw PlatformError(error.code(),
                        "cannot make the folder " + path + ": " + error.description());
  }
  std::error_code unreadable;
  if (!std::filesystem::is_directory(path, unreadable)) {
    throw PlatformError(Errc::path_not_found, path + " is not a directory");
  }
}

}  // namespace velmora::uv
