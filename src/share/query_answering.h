// Answers a query with the shared files that match it: one query hit on the connection it came on,
// nothing when nothing matches. It does not route, and reads no file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "form/form.h"
#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/field_number.h"
#include "protocol/descriptor_header.h"
#include "share/questions.h"
#include "share/shared_index.h"

namespace velmora {

inline constexpr std::size_t kMaxSearchWords = 10;

// The words of a search text, upper-cased, cut at blanks; two blanks in a row give an empty word.
// Kept: "*", "?" and "+" are letters like any other. An 11th word raises "Subscript out of range".
class SearchWords {
 public:
  // Good until the next call, which uses the same memory.
  std::span<const std::string_view> of(std::string_view search_text);

 private:
  std::string text_;
  std::array<std::string_view, kMaxSearchWords> words_;
};

class QueryAnswering {
 public:
  QueryAnswering(const SharedIndex& index, const Form& form, ReplyChannel& replies, DebugLog& log,
                 const Behaviour& behaviour = kClassic);

  // `hops`: how far the query has come. Every error writes "Error: send_query_reply: " and its
  // description, and nothing is sent.
  void send_query_reply(std::string_view search_text, std::string_view query_guid,
                        std::size_t connection, std::uint8_t hops = 0);

 private:
  std::string query_hit(const std::vector<std::size_t>& file_numbers) const;
  std::string descriptor(std::string_view query_guid, std::uint8_t hops,
                         const std::string& payload) const;
  std::uint8_t ttl_for(std::uint8_t hops) const;

  const SharedIndex& index_;
  const Form& form_;
  ReplyChannel& replies_;
  DebugLog& log_;
  const Behaviour& behaviour_;
  FieldNumber limit_;
  SearchWords words_;
};

}  // namespace velmora
