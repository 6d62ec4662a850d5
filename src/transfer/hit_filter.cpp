#include "transfer/hit_filter.h"

#include <algorithm>

#include "share/name_index.h"

namespace velmora {
namespace {

std::vector<std::string> words_of(std::string text) {
  make_upper_case(text);
  std::vector<std::string> words;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t space = std::min(text.find(' ', start), text.size());
    if (space > start) words.push_back(text.substr(start, space - start));
    start = space + 1;
  }
  return words;
}

}  // namespace

QueryHit HitFilter::kept(const QueryHit& hit) {
  choose_words(hit);
  QueryHit kept = hit;
  kept.results.resize(std::min<std::size_t>(hit.hits, kept.results.size()));
  std::erase_if(kept.results, [this](const QueryHitResult& result) {
    return !asked_.empty() && !meets_a_search(result.file_name);
  });
  kept.hits = static_cast<std::uint8_t>(kept.results.size());
  return kept;
}

// Answers find their search by its identifier where they are relayed by it; else, and when that
// search's slot has gone to another one, a hit may answer any of the three.
void HitFilter::choose_words(const QueryHit& hit) {
  asked_.clear();
  const std::string_view guid(hit.query_guid.data(), hit.query_guid.size());
  const auto& slots = slots_.search_slots();
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (slots[i].text.empty()) continue;
    if (words_[i].text != slots[i].text) words_[i] = {slots[i].text, words_of(slots[i].text)};
    asked_.push_back(&words_[i]);
  }
  if (!behaviour_.relay) return;
  const auto answered = [&](const Words* words) {
    return slots[static_cast<std::size_t>(words - words_.data())].guid == guid;
  };
  if (std::any_of(asked_.begin(), asked_.end(), answered)) {
    std::erase_if(asked_, [&](const Words* words) { return !answered(words); });
  }
}

bool HitFilter::meets_a_search(std::string_view name) {
  upper_ = name;
  make_upper_case(upper_);
  return std::any_of(asked_.begin(), asked_.end(), [this](const Words* search) {
    return std::all_of(search->words.begin(), search->words.end(), [this](const std::string& word) {
      return upper_.find(word) != std::string::npos;
    });
  });
}

}  // namespace velmora
