#include "app/settings_store.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "platform/trap.h"
#include "platform/utf8.h"

namespace velmora {
namespace {

constexpr std::string_view kMark = "\xE2\x90\x9B";  // U+241B

void add_marked(std::string& out, std::string_view bytes) {
  for (const char c : bytes) {
    out += kMark;
    out += fmt::format("{:02X}", static_cast<unsigned char>(c));
  }
}

// A byte string as a TOML basic string, quotes included.
std::string quoted(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const std::size_t length = utf8_character(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    const auto byte = static_cast<unsigned char>(text.front());
    if (length == 0 || character == kMark) {
      add_marked(out, character);
    } else if (byte == '"' || byte == '\\') {
      out += '\\';
      out += character;
    } else if (byte == '\r') {
      out += "\\r";
    } else if (byte == '\n') {
      out += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      out += fmt::format("\\u{:04X}", byte);
    } else {
      out += character;
    }
    text.remove_prefix(character.size());
  }
  return out + "\"";
}

// Keys stand bare wherever TOML allows it, as a person would write them.
std::string key_text(std::string_view key) {
  const auto bare = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-';
  };
  const bool plain = !key.empty() && std::all_of(key.begin(), key.end(), bare);
  return plain ? std::string(key) : quoted(key);
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Takes the marks out again; a mark without two digits behind it stands for itself.
std::string unmarked(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t digits = at + kMark.size();
    if (text.substr(at).starts_with(kMark) && digits + 2 <= text.size()) {
      const int high = hex_digit(text[digits]);
      const int low = hex_digit(text[digits + 1]);
      if (high >= 0 && low >= 0) {
        out += static_cast<char>(high * 16 + low);
        at = digits + 2;
        continue;
      }
    }
    out += text[at++];
  }
  return out;
}

std::optional<std::string> text_of(const toml::node& node) {
  if (const auto* text = node.as_string()) return unmarked(text->get());
  if (const auto* number = node.as_integer()) return fmt::format("{}", number->get());
  if (const auto* number = node.as_floating_point()) return fmt::format("{}", number->get());
  if (const auto* flag = node.as_boolean()) return flag->get() ? "1" : "0";
  return std::nullopt;  // no setting has another kind
}

// A key without the number at its end, and that number.
std::pair<std::string_view, std::string_view> split_number(std::string_view key) {
  const std::size_t last = key.find_last_not_of("0123456789");
  const std::size_t stem = last == std::string_view::npos ? 0 : last + 1;
  return {key.substr(0, stem), key.substr(stem)};
}

}  // namespace

bool SettingsStore::KeyOrder::operator()(const std::string& left, const std::string& right) const {
  const auto [left_stem, left_number] = split_number(left);
  const auto [right_stem, right_number] = split_number(right);
  return std::tuple(left_stem, left_number.size(), left_number) <
         std::tuple(right_stem, right_number.size(), right_number);
}

std::string SettingsStore::load() {
  sections_.clear();
  untouchable_.reset();
  std::string content;
  try {
    content = files_.read_whole(path_, kMostBytes);
  } catch (const PlatformError& error) {
    if (error.code() == Errc::path_not_found) return {};
    untouchable_ = error;
    return fmt::format("{}: {}", path_, error.description());
  }
  try {
    parse(content);
    return {};
  } catch (const std::exception&) {
    sections_.clear();
    const std::string why = description_of_current_error();
    const std::string bad = path_ + ".bad";
    try {
      files_.save(bad, content);
      return fmt::format("{} is not valid and is kept as {}: {}", path_, bad, why);
    } catch (const PlatformError& error) {
      untouchable_ = error;
      return fmt::format("{} is not valid: {}", path_, why);
    }
  }
}

void SettingsStore::parse(const std::string& toml) {
  const toml::table document = toml::parse(toml);
  for (const auto& [section, table] : document) {
    if (!table.is_table()) continue;
    auto& values = sections_[unmarked(section.str())];
    for (const auto& [key, node] : *table.as_table()) {
      if (auto text = text_of(node)) values[unmarked(key.str())] = std::move(*text);
    }
  }
}

void SettingsStore::keep_copy() {
  files_.save(path_ + ".bad", files_.read_whole(path_, kMostBytes));
}

void SettingsStore::save() {
  if (untouchable_) throw *untouchable_;
  const std::string content = to_toml();
  if (content.size() > kMostBytes) throw PlatformError(Errc::out_of_memory);
  files_.save(path_, content);
}

std::string SettingsStore::to_toml() const {
  std::string out;
  for (const auto& [section, values] : sections_) {
    if (!out.empty()) out += "\n";
    out += fmt::format("[{}]\n", key_text(section));
    for (const auto& [key, value] : values) {
      out += fmt::format("{} = {}\n", key_text(key), quoted(value));
    }
  }
  return out;
}

std::string SettingsStore::read(const std::string& section, const std::string& key,
                                const std::string& otherwise) const {
  const auto values = sections_.find(section);
  if (values == sections_.end()) return otherwise;
  const auto value = values->second.find(key);
  return value == values->second.end() ? otherwise : value->second;
}

void SettingsStore::write(const std::string& section, const std::string& key, std::string value) {
  sections_[section][key] = std::move(value);
}

void SettingsStore::delete_section(const std::string& section) { sections_.erase(section); }

}  // namespace velmora
