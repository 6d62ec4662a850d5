#include "net/query_routes.h"

#include <algorithm>

namespace velmora {
namespace {

constexpr std::size_t kMostOfAName = 256;  // of a hit's name is looked at

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool contains(std::string_view name, std::string_view word) {
  return std::search(name.begin(), name.end(), word.begin(), word.end(),
                     [](char a, char b) { return upper(a) == upper(b); }) != name.end() ||
         word.empty();
}

// As servents match a search with their files: every word occurs, in any case.
bool answers(std::string_view name, std::string_view text) {
  while (!text.empty()) {
    const std::size_t blank = std::min(text.find(' '), text.size());
    if (!contains(name, text.substr(0, blank))) return false;
    text.remove_prefix(std::min(blank + 1, text.size()));
  }
  return true;
}

GuidBytes key_of(std::string_view guid) {
  GuidBytes key;
  key = guid;
  return key;
}

}  // namespace

const QueryRoutes::Entry* QueryRoutes::entry(Number number) const {
  if (number == 0 || last_ - number >= kEntries) return nullptr;
  return &ring_[number % kEntries];
}

QueryRoutes::Number QueryRoutes::newest(std::string_view guid) const {
  const auto known = newest_.find(key_of(guid));
  return known == newest_.end() ? 0 : known->second;
}

bool QueryRoutes::repeated(std::string_view guid, std::string_view text,
                           std::int64_t now_ms) const {
  const Entry* one = entry(newest(guid));
  for (int i = 0; one != nullptr && i < kMostOfOneIdentifier; ++i, one = entry(one->older)) {
    if (now_ms - one->at_ms >= kRepeatMs) return false;  // as are all before it
    if (one->text == text) return true;
  }
  return false;
}

void QueryRoutes::enter(std::string_view guid, std::string_view text, const Way& from,
                        std::int64_t now_ms) {
  const Number number = last_ + 1;
  const std::size_t place = number % kEntries;
  if (place >= ring_.size()) ring_.resize(place + 1);
  Entry next{key_of(guid), std::string(text), from, now_ms, newest(guid)};
  newest_[next.guid] = number;
  // What is overwritten is the oldest; its identifier goes when no other entry has it.
  if (number > kEntries) {
    const auto known = newest_.find(ring_[place].guid);
    if (known != newest_.end() && known->second == number - kEntries) newest_.erase(known);
  }
  ring_[place] = std::move(next);
  last_ = number;
}

const Way* QueryRoutes::way_back(std::string_view guid, std::string_view name,
                                 const std::function<bool(const Way&)>& usable) const {
  name = name.substr(0, kMostOfAName);
  const Way* newest_usable = nullptr;
  const Entry* one = entry(newest(guid));
  for (int i = 0; one != nullptr && i < kMostOfOneIdentifier; ++i, one = entry(one->older)) {
    if (!usable(one->from)) continue;
    if (answers(name, one->text)) return &one->from;
    if (newest_usable == nullptr) newest_usable = &one->from;
  }
  return newest_usable;
}

void QueryRoutes::clear() {
  std::vector<Entry>().swap(ring_);
  newest_ = {};
  last_ = 0;
}

}  // namespace velmora
