#include "transfer/download_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/list_file.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "transfer/download_sources.h"
#include "transfer/http_reply.h"

namespace velmora {
namespace {

// How an entry goes on in the next run.
constexpr int kGoesOn = 0;
constexpr int kPaused = 1;
constexpr int kDone = 2;

int state_number(Turn turn) {
  if (turn == Turn::paused) return kPaused;
  return turn == Turn::done ? kDone : kGoesOn;
}

void put_source(std::string& text, const DownloadSource& source) {
  put_quoted(text, source.address);
  text += fmt::format(",{},{},", val(source.port), source.file_index);
  put_quoted(text, source.host_name);
  text += ',';
  put_quoted(text, source.speed);
  text += ',';
  put_quoted(text, std::string_view(source.servent_guid.data(), source.servent_guid.size()));
  text += kListLineEnd;
}

DownloadSource read_source(ListFileReader& reader) {
  DownloadSource source;
  source.address = reader.string_field();
  reader.comma();
  source.port = std::to_string(unsigned_port(to_port(reader.number_field())));
  reader.comma();
  source.file_index = to_int32(reader.number_field());
  reader.comma();
  source.host_name = reader.string_field();
  reader.comma();
  source.speed = reader.string_field();
  reader.comma();
  const std::string guid = reader.string_field();
  std::copy_n(guid.begin(), std::min(guid.size(), source.servent_guid.size()),
              source.servent_guid.begin());
  reader.line_end();
  return source;
}

void read_state(ListFileReader& reader, DownloadRecord& entry) {
  const std::int32_t state = to_int32(reader.number_field());
  if (state == kPaused) {
    entry.whole->turn = Turn::paused;
    entry.status = "Paused";
  } else if (state == kDone) {
    entry.whole->turn = Turn::done;
    entry.status = "Done";
    entry.bytes_received = entry.exact_size();
  } else {
    entry.status = "Queued";
  }
}

DownloadRecord read_entry(ListFileReader& reader) {
  DownloadRecord entry;
  entry.whole = std::make_unique<WholeFile>();
  reader.number_field();  // the file's own row number counts for nothing
  reader.comma();
  entry.name = reader.string_field();
  reader.comma();
  entry.extension = reader.string_field();
  reader.comma();
  const double size = reader.number_field();
  if (!(size >= 0 && size <= kMaxFileSize)) throw PlatformError(Errc::overflow);
  entry.size = decimal_text(size);
  reader.comma();
  entry.whole->exact = reader.number_field() != 0;
  reader.comma();
  read_state(reader, entry);
  reader.comma();
  const double sources = reader.number_field();
  if (!(sources >= 1 && sources <= kMaxSources)) throw PlatformError(Errc::subscript_out_of_range);
  reader.line_end();
  use_source(entry, read_source(reader));
  while (static_cast<double>(entry.whole->others.size()) + 1 < sources) {
    entry.whole->others.push_back(read_source(reader));
  }
  return entry;
}

}  // namespace

std::string downloads_text(const OneBased<DownloadRecord>& list) {
  std::string rows;
  std::size_t count = 0;
  for (const DownloadRecord& entry : list) {
    if (!entry.whole) continue;
    rows += std::to_string(++count) + ',';
    put_quoted(rows, entry.name);
    rows += ',';
    put_quoted(rows, entry.extension);
    rows += fmt::format(",{},{},{},{}", entry.exact_size(), entry.whole->exact ? 1 : 0,
                        state_number(entry.whole->turn), entry.whole->others.size() + 1);
    rows += kListLineEnd;
    put_source(rows, source_of(entry));
    for (const DownloadSource& source : entry.whole->others) put_source(rows, source);
  }
  std::string text = "\"Rows in this file:\"," + std::to_string(count);
  text += kListLineEnd;
  text += "\"Format: Row #, Name, Extension, Size, Exact, State, Sources\"";
  text += kListLineEnd;
  text += "\"Format of a source: IP, Port, File #, DNS, Speed, Servent\"";
  text += kListLineEnd;
  return text + rows;
}

void read_downloads(std::string_view text, std::vector<DownloadRecord>& entries, std::size_t most) {
  ListFileReader reader(text);
  reader.string_field();
  reader.comma();
  const double rows = reader.number_field();
  reader.line_end();
  for (int line = 0; line < 2; ++line) {
    reader.string_field();
    reader.line_end();
  }
  // Grown by what is there, never by what the file claims.
  while (static_cast<double>(entries.size()) + 1 <= rows) {
    DownloadRecord entry = read_entry(reader);
    if (entries.size() >= most) throw PlatformError(Errc::out_of_memory);
    entries.push_back(std::move(entry));
  }
}

std::string save_downloads(Files& files, const OneBased<DownloadRecord>& list) {
  return trapped("save_downloads: ", [&] {
    const std::string text = downloads_text(list);
    if (text.size() > kMaxDownloadsFile) throw PlatformError(Errc::out_of_memory);
    files.save(kDownloadsFile, text);
  });
}

std::string load_downloads(Files& files, std::vector<DownloadRecord>& entries, std::size_t most) {
  return trapped("load_downloads: ", [&] {
    std::string text;
    try {
      text = files.read_whole(kDownloadsFile, kMaxDownloadsFile);
    } catch (const PlatformError& error) {
      if (error.code() != Errc::path_not_found) throw;
      return;
    }
    read_downloads(text, entries, most);
  });
}

std::string keep_downloads(Files& files) {
  return trapped("save_downloads: ", [&] {
    try {
      files.save(std::string(kDownloadsFile) + ".bad",
                 files.read_whole(kDownloadsFile, kMaxDownloadsFile));
    } catch (const PlatformError& error) {
      if (error.code() != Errc::path_not_found) throw;  // nothing is there to be kept
    }
  });
}

}  // namespace velmora
