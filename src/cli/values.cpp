#include "cli/values.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>

#include "cli/failure.h"
#include "cli/progress.h"

namespace velmora::cli {
namespace {

bool is_address_part(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.';
}

}  // namespace

std::string lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return out;
}

nlohmann::json value_for(std::string_view kind, const std::string& text) {
  const std::string plain = lower(kind);
  const auto is = [&](std::string_view part) { return plain.find(part) != std::string::npos; };
  if (is("check")) {
    const std::string word = lower(text);
    for (const std::string_view yes : {"true", "on", "yes", "1"}) {
      if (word == yes) return true;
    }
    for (const std::string_view no : {"false", "off", "no", "0"}) {
      if (word == no) return false;
    }
    throw Failure(fmt::format("\"{}\" is neither true nor false (on/off, yes/no, 1/0)", text));
  }
  if (is("slider") || is("option")) {
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end) {
      throw Failure(fmt::format("\"{}\" is not a whole number", text));
    }
    return number;
  }
  return text;
}

std::string value_text(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_array()) return value.is_null() ? std::string() : value.dump();
  std::string out;
  for (const auto& item : value) out += (out.empty() ? "" : "\n") + value_text(item);
  return out;
}

std::string shown_value(const nlohmann::json& value) {
  return value.is_number_unsigned() ? shown_count(value.get<std::uint64_t>()) : value_text(value);
}

nlohmann::json number_or_text(const std::string& text) {
  if (text.empty() || text.find_first_not_of("0123456789,") != std::string::npos) return text;
  return read_count(text);
}

bool name_matches(const std::string& pattern, const std::string& name) {
  if (pattern.find_first_of("*?") != std::string::npos) {
    return fnmatch(lower(pattern).c_str(), lower(name).c_str(), 0) == 0;
  }
  return lower(name).find(lower(pattern)) != std::string::npos;
}

std::string version_number(const std::string& text) {
  constexpr std::string_view kLabel = "Version: ";
  return text.starts_with(kLabel) ? text.substr(kLabel.size()) : text;
}

bool shows_address(std::string_view cell, std::string_view address) {
  if (address.empty()) return false;
  for (std::size_t at = cell.find(address); at != std::string_view::npos;
       at = cell.find(address, at + 1)) {
    const std::size_t end = at + address.size();
    const bool begins = at == 0 || !is_address_part(cell[at - 1]);
    const bool ends = end == cell.size() || !is_address_part(cell[end]);
    if (begins && ends) return true;
  }
  return false;
}

std::string shared_text(const nlohmann::json& files, const nlohmann::json& bytes,
                        std::string_view verb) {
  const std::string count = shown_value(files);
  const std::string size = shown_value(bytes);
  if (count == "0" && size != "0")
    return fmt::format("{} bytes{}, as an earlier scan listed them", size, verb);
  return fmt::format("{} {}{}, {} bytes", count, count == "1" ? "file" : "files", verb, size);
}

std::string_view without_port(std::string_view host) { return host.substr(0, host.find(':')); }

bool is_connected(std::string_view status) {
  return status == "Connected" || status.starts_with("Waiting");
}

bool is_connecting(std::string_view status) {
  return status.starts_with("Requesting") || status.starts_with("accepting");
}

bool is_uploading(std::string_view status) {
  return status.starts_with("Uploading") || status.starts_with("Resuming");
}

std::string_view added_text(std::string_view before, std::string_view after) {
  if (after.starts_with(before)) return after.substr(before.size());
  if (before.starts_with(after)) return {};  // cut at its end, nothing new kept
  // cut at its start: the longest end of the old text that the new one begins with is known
  const std::size_t longest = std::min(before.size(), after.size());
  for (std::size_t length = longest; length > 0; --length) {
    if (before[before.size() - length] != after.front()) continue;
    if (after.starts_with(before.substr(before.size() - length))) return after.substr(length);
  }
  return after;
}

std::size_t occurrences(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos;
       at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

std::string last_line_with(std::string_view text, std::string_view start) {
  const std::size_t at = text.rfind(start);
  if (at == std::string_view::npos) return {};
  return std::string(text.substr(at, text.find_first_of("\r\n", at) - at));
}

bool is_download_of(std::string_view list_name, std::string_view name, std::string_view extension) {
  if (list_name == name) return true;
  return list_name.size() == name.size() + 1 + extension.size() && list_name.starts_with(name) &&
         list_name[name.size()] == '.' &&
         lower(list_name.substr(name.size() + 1)) == lower(extension);
}

std::string default_profile(const char* xdg_data_home, const std::string& home) {
  if (xdg_data_home != nullptr && xdg_data_home[0] == '/') {
    return std::string(xdg_data_home) + "/velmora";
  }
  return home + "/.local/share/velmora";
}

}  // namespace velmora::cli
