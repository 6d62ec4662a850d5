// The real machine for one servent without a screen: owns the loop and every part of the platform
// that runs on it. It outlives the servent. When it is destroyed it gives the last bytes of closed
// connections up to a second to leave.
#pragma once

#include <memory>
#include <string>

#include "platform/platform.h"
#include "platform/uv/uv_loop.h"

namespace velmora::uv {

class UvPlatform {
 public:
  // The profile folder is made if it is missing. An empty listen address means all addresses.
  UvPlatform(const std::string& profile, const std::string& listen_address);
  ~UvPlatform();
  UvPlatform(const UvPlatform&) = delete;
  UvPlatform& operator=(const UvPlatform&) = delete;

  Platform platform();
  UvLoop& loop();

  // Makes a folder outside the profile and those above it, for the owner only, where missing. The
  // error names the folder.
  static void make_folder(const std::string& path);

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace velmora::uv
