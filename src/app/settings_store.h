// The settings of one servent as text values under a section and a key, kept in the profile's
// settings.toml: one table a section, every value a string. It knows no controls and converts no
// numbers. Nothing is written to the file before save().
// Values are byte strings. In the file a byte that is no part of valid UTF-8 stands as the mark
// "␛" (U+241B) and two hexadecimal digits, and so does each byte of a "␛" itself; all other texts
// stand as they are, with TOML's own escapes. A person may write a number or true and false bare.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/error.h"
#include "platform/files.h"

namespace velmora {

class SettingsStore {
 public:
  static constexpr const char* kFile = "settings.toml";
  static constexpr std::size_t kMostBytes = std::size_t{16} << 20;

  // The path is taken as Files takes it.
  explicit SettingsStore(Files& files, std::string path = kFile)
      : files_(files), path_(std::move(path)) {}

  // Replaces the content by the file's. A missing file is an empty store. A file that cannot be
  // read or understood is one too; then a text says so, and what could be read of it is kept
  // beside it under its name and ".bad". Returns "" on success. Raises nothing.
  std::string load();

  // Keeps the file as it is beside it under its name and ".bad". Raises a PlatformError.
  void keep_copy();

  // Writes the whole file anew. Raises a PlatformError and leaves the file as it was; so it does
  // when load() could neither read nor keep the file that is there.
  void save();

  [[nodiscard]] std::string read(const std::string& section, const std::string& key,
                                 const std::string& otherwise) const;
  void write(const std::string& section, const std::string& key, std::string value);
  void delete_section(const std::string& section);  // one that is not there is no error

 private:
  // Numbered keys stand in the order of their numbers: uppath2 before uppath10.
  struct KeyOrder {
    bool operator()(const std::string& left, const std::string& right) const;
  };

  void parse(const std::string& toml);
  [[nodiscard]] std::string to_toml() const;

  Files& files_;
  std::string path_;
  std::map<std::string, std::map<std::string, std::string, KeyOrder>> sections_;
  std::optional<PlatformError> untouchable_;  // why the file there must not be replaced
};

}  // namespace velmora
