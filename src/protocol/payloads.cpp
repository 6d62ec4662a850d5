#include "protocol/payloads.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/conversions.h"

namespace velmora {
namespace {

constexpr std::size_t kEntryNumbers = 8;  // file index and file size, before the name
constexpr std::size_t kMinimumSpeed = 2;  // before a query's text

// The bytes from an offset on; none when it lies beyond the end.
std::string_view from(std::string_view text, std::size_t offset) {
  return text.substr(std::min(offset, text.size()));
}

unsigned char first_byte(std::string_view text) {
  if (text.empty()) throw PlatformError(Errc::invalid_call);
  return static_cast<unsigned char>(text.front());
}

// Reads one entry of the result set and moves `rest` behind it. False when its name has no end.
bool read_result(std::string_view& rest, QueryHitResult& result, char& stage, DebugLog& log) {
  result.file_index = to_single(Str_to_Dword(rest, log));
  result.file_size = to_single(Str_to_Dword(from(rest, 4), log));
  stage = '2';
  const std::size_t end = rest.find(std::string_view("\0\0", 2), kEntryNumbers);
  if (end == std::string_view::npos) return false;
  stage = '3';
  result.file_name = rest.substr(kEntryNumbers, end - kEntryNumbers);
  stage = '4';
  rest.remove_prefix(end + 2);
  return true;
}

}  // namespace

std::string pong_to_str(const Pong& pong, DebugLog& log) {
  return Word_to_Str(pong.port) + IPdots_to_DwordStr(pong.address, log) + Dword_to_Str(pong.files) +
         Dword_to_Str(pong.kilobytes);
}

bool str_to_pong(std::string_view payload, Pong& pong, DebugLog& log, const Behaviour& behaviour) {
  if (static_cast<float>(payload.size()) != kPongLength) {
    log.debug_log("Error: str_to_pong: length wrong, no header please");
  }
  const char* field = "";
  const std::string error = trapped("", [&] {
    field = "Port ";
    pong.port = Str_to_Word(payload, behaviour);
    field = "IP ";
    pong.address = dotted_address(from(payload, 2));
    field = "Files ";
    pong.files = to_single(Str_to_Dword(from(payload, 6), log));
    field = "Bytes ";
    pong.kilobytes = to_single(Str_to_Dword(from(payload, 10), log));
  });
  if (!error.empty()) log.debug_log("Error: str_to_pong: " + std::string(field) + error);
  return error.empty();
}

std::string query_reply_to_str(const QueryHit& hit, DebugLog& log) {
  std::string bytes;
  trap(log, "Query_reply_to_str: ", [&] {
    bytes += static_cast<char>(hit.hits);
    bytes += Word_to_Str(hit.port);
    bytes += IPdots_to_DwordStr(hit.address, log);
    bytes += Dword_to_Str(hit.speed);
    for (std::size_t i = 0; i < hit.hits; ++i) {
      if (i >= hit.results.size()) throw PlatformError(Errc::subscript_out_of_range);
      const QueryHitResult& result = hit.results[i];
      bytes += Dword_to_Str(result.file_index);
      bytes += Dword_to_Str(result.file_size);
      bytes += result.file_name;
      bytes.append(2, '\0');
    }
    std::string guid = hit.servent_guid;
    guid.resize(kGuidSize, ' ');
    bytes += guid;
  });
  return bytes;
}

QueryHit str_to_query_reply(const DescriptorHeader& header, std::string_view payload, DebugLog& log,
                            const Behaviour& behaviour) {
  QueryHit hit;
  const std::string_view guid = header.guid;
  std::copy_n(guid.begin(), std::min(guid.size(), hit.query_guid.size()), hit.query_guid.begin());
  char stage = '1';
  const std::string error = trapped("", [&] {
    std::string_view rest =
        payload.substr(0, static_cast<std::size_t>(std::max(header.payload_length, 0.0F)));
    const std::size_t claimed = hit.hits = first_byte(rest);
    hit.port = Str_to_Word(from(rest, 1), behaviour);
    hit.address = dotted_address(from(rest, 3));
    hit.speed = to_single(Str_to_Dword(from(rest, 7), log));
    rest = from(rest, 11);
    hit.results.reserve(std::min(claimed, rest.size() / kEntryNumbers));
    while (hit.results.size() < claimed) {
      QueryHitResult result;
      stage = '1';
      if (!read_result(rest, result, stage, log)) break;
      hit.results.push_back(result);
    }
    hit.hits = static_cast<std::uint8_t>(hit.results.size());
    if (rest.size() == kGuidSize) {
      hit.servent_guid = rest;
      log.debug_log("Str_to_query_reply: GUID IS at end");
    } else {
      log.debug_log("Str_to_query_reply: GUID not at end");
    }
  });
  if (!error.empty()) {
    log.debug_log(std::string("Error: str_to_query_reply: ") + stage + " " + error);
  }
  return hit;
}

std::string push_to_str(const Push& push, DebugLog& log) {
  return std::string(push.servent) + Dword_to_Str(push.file_number) +
         IPdots_to_DwordStr(push.address, log) + Word_to_Str(to_port(push.port));
}

std::optional<Push> str_to_push(std::string_view payload) {
  if (payload.size() != static_cast<std::size_t>(kPushLength)) return std::nullopt;
  const auto little_endian = [payload](std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = width; i-- > 0;) {
      value = value << 8U | static_cast<unsigned char>(payload[offset + i]);
    }
    return value;
  };
  Push push;
  push.servent = payload.substr(0, kGuidSize);
  push.file_number = little_endian(16, 4);
  push.address = dotted_address(payload.substr(20, 4));
  push.port = static_cast<std::uint16_t>(little_endian(24, 2));
  return push;
}

std::string query_to_str(std::int16_t minimum_speed, std::string_view text) {
  std::string payload = Word_to_Str(minimum_speed);
  payload += text;
  payload += '\0';
  return payload;
}

std::string_view query_text(const DescriptorHeader& header, std::string_view descriptor) {
  if (header.payload_length < 3) throw PlatformError(Errc::invalid_call);
  const auto length = static_cast<std::size_t>(header.payload_length) - kMinimumSpeed;
  std::string_view text = from(descriptor, kHeaderSize + kMinimumSpeed).substr(0, length);
  if (text.ends_with('\0')) text.remove_suffix(1);
  return text;
}

}  // namespace velmora
