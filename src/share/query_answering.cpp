#include "share/query_answering.h"

#include <algorithm>

#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/payloads.h"

namespace velmora {

std::span<const std::string_view> SearchWords::of(std::string_view search_text) {
  text_ = search_text;
  make_upper_case(text_);
  std::size_t count = 0;
  for (std::size_t start = 0; start < text_.size();) {
    if (count == kMaxSearchWords) throw PlatformError(Errc::subscript_out_of_range);
    const std::size_t space = std::min(text_.find(' ', start), text_.size());
    words_[count++] = std::string_view(text_).substr(start, space - start);
    start = space + 1;
  }
  return std::span(words_).first(count);
}

QueryAnswering::QueryAnswering(const SharedIndex& index, const Form& form, ReplyChannel& replies,
                               DebugLog& log, const Behaviour& behaviour)
    : index_(index), form_(form), replies_(replies), log_(log), behaviour_(behaviour) {}

void QueryAnswering::send_query_reply(std::string_view search_text, std::string_view query_guid,
                                      std::size_t connection, std::uint8_t hops) {
  trap(log_, "Error: send_query_reply: ", [&] {
    const double limit = limit_.of(form_.query_config.text());
    const auto file_numbers = index_.names().find(words_.of(search_text), limit).names;
    if (file_numbers.empty()) return;
    replies_.send_reply(connection, descriptor(query_guid, hops, query_hit(file_numbers)));
    replies_.count_query_hit_sent();
  });
}

std::string QueryAnswering::query_hit(const std::vector<std::size_t>& file_numbers) const {
  QueryHit hit;
  hit.hits = to_byte(static_cast<double>(file_numbers.size()));
  const std::string& forced = form_.forceIP_config.text();
  hit.address = forced.empty() ? replies_.local_address() : forced;
  hit.port = to_port(number(form_.upport_config.text()));
  hit.speed = to_single(number(form_.speed_config.text()));
  hit.servent_guid = replies_.servent_guid();
  hit.results.reserve(file_numbers.size());
  for (const std::size_t file_number : file_numbers) {
    const SharedFile& file = index_.shared_files().at(file_number);
    hit.results.push_back(
        {static_cast<float>(file_number), static_cast<float>(file.size), file.name});
  }
  return query_reply_to_str(hit, log_);
}

std::string QueryAnswering::descriptor(std::string_view query_guid, std::uint8_t hops,
                                       const std::string& payload) const {
  DescriptorHeader header;
  header.guid = query_guid;
  header.function = kQueryHit;
  header.ttl = ttl_for(hops);
  header.hops = 0;
  header.payload_length = static_cast<float>(payload.size());
  return header_to_str(header, log_) + payload;
}

// Kept: the hit gets the same TTL however far the query has come. When hits are passed back it must
// reach at least as far.
std::uint8_t QueryAnswering::ttl_for(std::uint8_t hops) const {
  constexpr int kMargin = 2;
  constexpr int kFarthest = 50;
  const std::uint8_t own = to_byte(number(form_.ttlMax_config.text()));
  if (!behaviour_.relay) return own;
  return std::max(own, static_cast<std::uint8_t>(std::min(hops + kMargin, kFarthest)));
}

}  // namespace velmora
