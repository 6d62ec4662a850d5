#include "transfer/download_sources.h"

#include <algorithm>
#include <utility>

#include "platform/number.h"

namespace velmora {
namespace {

template <class One, class Other>
bool same_place(const One& one, const Other& other) {
  return one.address == other.address && one.port == other.port;
}

template <class Other>
auto find_place(std::vector<DownloadSource>& sources, const Other& other) {
  return std::find_if(sources.begin(), sources.end(),
                      [&](const DownloadSource& source) { return same_place(source, other); });
}

// The servent may be another one by then, with files of its own.
template <class Source>
void refresh(Source& source, const search_result& result) {
  source.file_index = result.file_index;
  source.servent_guid = result.servent_guid;
}

}  // namespace

bool same_file(const search_result& one, const search_result& other) {
  return one.name == other.name && one.extension == other.extension &&
         to_single(val(one.size)) == to_single(val(other.size));
}

DownloadSource source_of(const search_result& result) {
  return {result.file_index, result.address, result.port,
          result.host_name,  result.speed,   result.servent_guid};
}

void use_source(DownloadRecord& record, DownloadSource source) {
  record.file_index = source.file_index;
  record.address = std::move(source.address);
  record.port = std::move(source.port);
  record.host_name = std::move(source.host_name);
  record.speed = std::move(source.speed);
  record.servent_guid = source.servent_guid;
  record.server.clear();
}

AddedSource add_source(DownloadRecord& record, const search_result& result) {
  WholeFile& whole = *record.whole;
  if (same_place(record, result)) {
    if (record.state < 1) refresh(record, result);
    return AddedSource::known;
  }
  const auto known = find_place(whole.others, result);
  if (known != whole.others.end()) {
    refresh(*known, result);
    return AddedSource::known;
  }
  if (find_place(whole.dropped, result) != whole.dropped.end()) return AddedSource::dropped;
  if (whole.others.size() + 1 >= kMaxSources) return AddedSource::too_many;
  whole.others.push_back(source_of(result));
  return AddedSource::as_another;
}

void add_sources(DownloadRecord& record, const DownloadRecord& other) {
  auto& others = record.whole->others;
  std::vector<DownloadSource> more = other.whole->others;
  more.insert(more.begin(), source_of(other));
  for (DownloadSource& source : more) {
    if (others.size() + 1 >= kMaxSources) return;
    if (same_place(record, source) || find_place(others, source) != others.end()) continue;
    others.push_back(std::move(source));
  }
}

void forgive_source(DownloadRecord& record, const search_result& result) {
  auto& dropped = record.whole->dropped;
  const auto found = find_place(dropped, result);
  if (found != dropped.end()) dropped.erase(found);
}

void next_source(DownloadRecord& record) {
  auto& others = record.whole->others;
  if (others.empty()) return;
  others.push_back(source_of(record));
  use_source(record, std::move(others.front()));
  others.erase(others.begin());
}

bool drop_source(DownloadRecord& record) {
  WholeFile& whole = *record.whole;
  if (find_place(whole.dropped, record) == whole.dropped.end()) {
    if (whole.dropped.size() >= kMaxSources) whole.dropped.erase(whole.dropped.begin());
    whole.dropped.push_back(source_of(record));
  }
  if (whole.others.empty()) return false;
  use_source(record, std::move(whole.others.front()));
  whole.others.erase(whole.others.begin());
  return true;
}

}  // namespace velmora
