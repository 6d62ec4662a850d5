#include "model_descriptors.h"

#include <algorithm>

namespace velmora::model {
namespace {

constexpr const char* kTooShort = "Invalid procedure call or argument";

unsigned byte_at(std::string_view bytes, std::size_t offset) {
  return static_cast<unsigned char>(bytes[offset]);
}

std::uint64_t number_at(std::string_view bytes, std::size_t offset, std::size_t width) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < width; ++i) {
    value |= static_cast<std::uint64_t>(byte_at(bytes, offset + i)) << (8 * i);
  }
  return value;
}

std::string four_bytes(const std::string& dotted) {
  std::string bytes;
  for (std::size_t start = 0; bytes.size() < 4;) {
    const std::size_t dot = std::min(dotted.find('.', start), dotted.size());
    bytes += static_cast<char>(std::stoi(dotted.substr(start, dot - start)));
    start = dot + 1;
  }
  return bytes;
}

// Reads one 32-bit field; a cut one is a line of its own and reads as 0.
std::uint64_t long_field(std::string_view bytes, std::size_t offset, Lines& lines) {
  if (bytes.size() >= offset + 4) return number_at(bytes, offset, 4);
  lines.push_back(std::string("Str_to_Dword: ") + kTooShort);
  return 0;
}

// What is wrong with port and address that begin here; empty when both can be read.
const char* port_error(std::string_view bytes, std::size_t offset) {
  if (bytes.size() < offset + 2) return kTooShort;
  return byte_at(bytes, offset + 1) >= 128 ? "Overflow" : "";
}

std::string upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  }
  return text;
}

}  // namespace

std::string little_endian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 255U);
  return text;
}

std::string encode(const Descriptor& header) {
  return header.guid + little_endian(header.function, 1) + little_endian(header.ttl, 1) +
         little_endian(header.hops, 1) + little_endian(header.length, 4);
}

Descriptor decode(std::string_view bytes) {
  return {.guid = std::string(bytes.substr(0, 16)),
          .function = byte_at(bytes, 16),
          .ttl = byte_at(bytes, 17),
          .hops = byte_at(bytes, 18),
          .length = static_cast<std::size_t>(number_at(bytes, 19, 4))};
}

std::string pong(const Identity& who, const std::string& guid) {
  std::uint64_t total = 0;
  for (const SharedName& file : who.files) total += file.size;
  return encode({.guid = guid, .function = 1, .ttl = who.ttl, .length = 14}) +
         little_endian(who.message_port, 2) + four_bytes(who.address) +
         little_endian(who.files.size(), 4) + little_endian(total, 4);
}

std::string query(const Identity& who, const std::string& guid, std::string_view text) {
  return encode({.guid = guid, .function = 128, .ttl = who.ttl, .length = text.size() + 3}) +
         little_endian(who.speed, 2) + std::string(text) + '\0';
}

std::string query_text(std::size_t length, std::string_view payload) {
  if (length < 3 || payload.size() < 2) return {};
  std::string text(payload.substr(2, length - 2));
  if (!text.empty() && text.back() == '\0') text.pop_back();
  return text;
}

std::string answer(const Identity& who, const std::string& guid, const std::string& text,
                   Lines& lines) {
  std::vector<std::string> words;
  std::string word;
  for (const char c : text + (text.empty() || text.back() != ' ' ? " " : "")) {
    if (c != ' ') {
      word += c;
      continue;
    }
    if (!text.empty()) words.push_back(upper(word));
    word.clear();
  }
  if (words.size() > 10) {
    lines.emplace_back("Error: send_query_reply: Subscript out of range");
    return {};
  }
  std::string results;
  std::size_t hits = 0;
  for (std::size_t f = 0; f < who.files.size() && (f == 0 || hits < who.most_hits); ++f) {
    const std::string name = upper(who.files[f].name);
    if (!std::all_of(words.begin(), words.end(), [&](const std::string& wanted) {
          return name.find(wanted) != std::string::npos;
        })) {
      continue;
    }
    ++hits;
    results += little_endian(f + 1, 4) + little_endian(who.files[f].size, 4) + who.files[f].name +
               std::string(2, '\0');
  }
  if (hits == 0) return {};
  const std::string payload = little_endian(hits, 1) + little_endian(who.upload_port, 2) +
                              four_bytes(who.address) + little_endian(who.speed, 4) + results +
                              who.guid;
  return encode({.guid = guid, .function = 129, .ttl = who.ttl, .length = payload.size()}) +
         payload;
}

void read_pong(std::string_view payload, Lines& lines) {
  const std::string error = "Error: str_to_pong: ";
  if (payload.size() != 14) lines.push_back(error + "length wrong, no header please");
  if (const std::string port = port_error(payload, 0); !port.empty()) {
    lines.push_back(error + "Port " + port);
  } else if (payload.size() < 6) {
    lines.push_back(error + "IP " + kTooShort);
  } else {
    long_field(payload, 6, lines);
    long_field(payload, 10, lines);
  }
}

void read_query_hit(std::size_t length, std::string_view bytes, Lines& lines) {
  const std::string error = "Error: str_to_query_reply: ";
  bytes = bytes.substr(0, length);
  if (bytes.empty()) {
    lines.push_back(error + "1 " + kTooShort);
    return;
  }
  if (const std::string port = port_error(bytes, 1); !port.empty()) {
    lines.push_back(error + "1 " + port);
    return;
  }
  if (bytes.size() < 7) {
    lines.push_back(error + "1 " + kTooShort);
    return;
  }
  long_field(bytes, 7, lines);
  std::string_view rest = bytes.substr(std::min<std::size_t>(11, bytes.size()));
  for (unsigned left = byte_at(bytes, 0); left > 0; --left) {
    long_field(rest, 0, lines);
    long_field(rest, 4, lines);
    const std::size_t end = rest.find(std::string_view("\0\0", 2), 8);
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 2);
  }
  lines.emplace_back(rest.size() == 16 ? "Str_to_query_reply: GUID IS at end"
                                       : "Str_to_query_reply: GUID not at end");
}

}  // namespace velmora::model
