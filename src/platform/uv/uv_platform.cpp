#include "platform/uv/uv_platform.h"

#include <filesystem>
#include <system_error>

#include "platform/uv/console_screen.h"
#include "platform/uv/uv_control_channel.h"
#include "platform/uv/uv_directory.h"
#include "platform/uv/uv_dns_client.h"
#include "platform/uv/uv_files.h"
#include "platform/uv/uv_network.h"

namespace velmora::uv {
namespace {

constexpr int kLastBytesMs = 1000;

}  // namespace

struct UvPlatform::Parts {
  Parts(const std::string& profile, const std::string& listen_address)
      : files(profile),
        network(loop, listen_address),
        control(loop, profile),
        dns(loop, listen_address) {}

  UvLoop loop;  // outlives what runs on it
  UvFiles files;
  UvNetwork network;
  UvControlChannel control;
  UvDnsClient dns;
  ConsoleScreen screen;
};

UvPlatform::UvPlatform(const std::string& profile, const std::string& listen_address)
    : parts_(std::make_unique<Parts>(profile, listen_address)) {}

UvPlatform::~UvPlatform() {
  parts_->control.close();
  parts_->loop.run_until(
      [this] { return !parts_->network.parting() && !parts_->control.parting(); }, kLastBytesMs);
}

Platform UvPlatform::platform() {
  return {parts_->loop,   parts_->network, parts_->files,   parts_->screen,
          parts_->screen, parts_->screen,  parts_->control, parts_->dns};
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
