// What one servent encodes another decodes: headers, pongs, query hits, queries, and the request of
// a download as the upload port reads it.
#include <deque>

#include "fuzzed_parts.h"
#include "protocol/payloads.h"
#include "share/upload_request.h"
#include "transfer/download_record.h"
#include "transfer/download_request.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

DescriptorHeader any_header(Input& input) {
  DescriptorHeader header;
  header.guid = input.piece();
  header.function = static_cast<std::uint8_t>(input.byte());
  header.ttl = static_cast<std::uint8_t>(input.byte());
  header.hops = static_cast<std::uint8_t>(input.byte());
  header.payload_length = static_cast<float>(input.number() % 32001);
  return header;
}

std::string any_address(Input& input) {
  std::string address = std::to_string(input.byte());
  for (int i = 0; i < 3; ++i) address += "." + std::to_string(input.byte());
  return address;
}

// A file index or size that fits single precision exactly.
float any_number(Input& input) { return static_cast<float>(input.number() % (1U << 24)); }

void hits(Input& input, CountingLog& log) {
  QueryHit hit;
  hit.port = static_cast<std::int16_t>(input.number() % 32768);
  hit.address = any_address(input);
  hit.speed = any_number(input);
  hit.servent_guid = std::string(kGuidSize, static_cast<char>(input.byte()));
  std::deque<std::string> names;
  for (hit.hits = 0; hit.hits < 255 && !input.empty(); ++hit.hits) {
    std::string& name = names.emplace_back(input.piece());
    std::replace(name.begin(), name.end(), '\0', '0');
    hit.results.push_back({any_number(input), any_number(input), name});
  }
  const std::string payload = query_reply_to_str(hit, log);
  DescriptorHeader header;
  header.payload_length = static_cast<float>(payload.size());
  const QueryHit back = str_to_query_reply(header, payload, log);
  require(back.port == hit.port && back.address == hit.address && back.speed == hit.speed &&
              back.servent_guid == hit.servent_guid && back.hits == hit.hits,
          "a hit comes back");
  for (std::size_t i = 0; i < hit.results.size(); ++i) {
    require(back.results[i].file_name == hit.results[i].file_name &&
                back.results[i].file_index == hit.results[i].file_index &&
                back.results[i].file_size == hit.results[i].file_size,
            "its results too");
  }
}

void request(Input& input) {
  DownloadRecord record;
  record.file_index = static_cast<std::int32_t>(input.number() % 32768);
  record.name = input.piece();
  record.extension = "mp3";
  record.size = std::to_string(input.number());
  record.bytes_received = input.number();
  if (!can_be_requested(record)) return;
  // The reader looks for these anywhere, so a name that holds one is not understood.
  for (const char* mark : {" HTTP", "User-Agent: ", "Range: bytes="}) {
    if (record.name.find(mark) != std::string::npos) return;
  }
  const UploadRequest read = parse_upload_request(download_request(record, "0.1.0", "6345"));
  require(!read.not_a_get && read.file_number == record.file_index, "the number comes back");
  require(read.file_name == record.full_name(), "the name comes back");
  require(read.range_start == static_cast<double>(record.bytes_received), "the start comes back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  CountingLog log;
  const DescriptorHeader header = any_header(input);
  const DescriptorHeader back = str_to_header(header_to_str(header, log));
  require(back.guid == header.guid && back.function == header.function && back.ttl == header.ttl &&
              back.hops == header.hops && back.payload_length == header.payload_length,
          "a header comes back");
  Pong pong;
  pong.port = static_cast<std::int16_t>(input.number() % 32768);
  pong.address = any_address(input);
  pong.files = any_number(input);
  pong.kilobytes = any_number(input);
  Pong read;
  require(str_to_pong(pong_to_str(pong, log), read, log) && read.port == pong.port &&
              read.address == pong.address && read.files == pong.files &&
              read.kilobytes == pong.kilobytes,
          "a pong comes back");
  std::string text(input.piece());
  while (text.ends_with('\0')) text.pop_back();
  const std::string payload = query_to_str(56, text);
  DescriptorHeader query;
  query.payload_length = static_cast<float>(payload.size());
  require(query_text(query, header_to_str(query, log) + payload) == text, "a query comes back");
  request(input);
  hits(input, log);
  return 0;
}
