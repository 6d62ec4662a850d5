#include "transfer/disk_name.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/error.h"

namespace velmora {
namespace {

constexpr std::size_t kHashMark = 9;        // "_" and 8 digits
constexpr std::size_t kMaxExtension = 120;  // with its dot; a longer one is cut like a name

// What the program itself keeps in its profile, which may be the download directory.
constexpr std::array<std::string_view, 12> kOwnNames = {
    "settings.toml",          "settings.toml.bad",
    "velmora_cache.dat",      "velmora_cache.dat.bad",
    "velmora_downloads.dat",  "velmora_downloads.dat.bad",
    "velmora_identifier.txt", "velmora_shared.dat",
    "velmora_uploads.log",    "window.ini",
    "control.sock",           "lock"};

std::string lower_case(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::uint32_t fnv1a(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (const char c : text) hash = (hash ^ static_cast<std::uint8_t>(c)) * 16777619U;
  return hash;
}

// How many bytes at the start are one character that does not belong in a file name: a separator,
// a control character, or (in UTF-8) one that changes the direction or the line of what follows.
std::size_t unwanted(std::string_view rest) {
  const auto byte = [&](std::size_t i) {
    return i < rest.size() ? static_cast<std::uint8_t>(rest[i]) : std::uint8_t{0};
  };
  if (byte(0) < 0x20 || byte(0) == 0x7F || rest[0] == '/' || rest[0] == '\\') return 1;
  if (byte(0) == 0xC2 && byte(1) >= 0x80 && byte(1) <= 0x9F) return 2;  // U+0080 to U+009F
  if (byte(0) == 0xD8 && byte(1) == 0x9C) return 2;                     // U+061C
  if (byte(0) != 0xE2) return 0;
  if (byte(1) == 0x80 && (byte(2) == 0x8E || byte(2) == 0x8F)) return 3;  // U+200E, U+200F
  if (byte(1) == 0x80 && byte(2) >= 0xA8 && byte(2) <= 0xAE) return 3;    // U+2028 to U+202E
  if (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9) return 3;    // U+2066 to U+2069
  return 0;
}

std::string cleaned(std::string_view name) {
  std::string clean;
  clean.reserve(name.size());
  for (std::size_t i = 0; i < name.size();) {
    const std::size_t length = unwanted(name.substr(i));
    clean += length == 0 ? name[i] : '_';
    i += length == 0 ? 1 : length;
  }
  if (clean.empty() || clean == "." || clean == "..") clean = "_";
  // Else it would be the file of another download in progress.
  if (lower_case(clean).ends_with(kPartialExtension)) {
    clean[clean.size() - kPartialExtension.size()] = '_';
  }
  return clean;
}

bool own_name(std::string_view name) {
  return std::find(kOwnNames.begin(), kOwnNames.end(), lower_case(name)) != kOwnNames.end();
}

// At most so many bytes, not ending inside a UTF-8 character.
std::string_view cut(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  std::size_t end = most;
  while (end > 0 && most - end < 3 && (static_cast<std::uint8_t>(text[end]) & 0xC0U) == 0x80U)
    --end;
  return text.substr(0, end);
}

}  // namespace

std::string disk_name(std::string_view name) {
  std::string clean = cleaned(name);
  if (clean == name && clean.size() <= kMaxDiskName && !own_name(clean)) return clean;

  const std::size_t last_dot = clean.rfind('.');
  const bool has_extension =
      last_dot != std::string::npos && clean.size() - last_dot <= kMaxExtension;
  const std::string_view whole(clean);
  const std::string_view extension = has_extension ? whole.substr(last_dot) : std::string_view();
  const std::string_view stem = whole.substr(0, whole.size() - extension.size());
  return fmt::format("{}_{:08x}{}", cut(stem, kMaxDiskName - kHashMark - extension.size()),
                     fnv1a(name), extension);
}

std::string path_in(const std::string& folder, std::string_view entry) {
  if (folder.empty()) throw PlatformError(Errc::path_not_found);
  std::string path = folder;
  if (path.back() != '/') path += '/';
  return path.append(entry);
}

}  // namespace velmora
