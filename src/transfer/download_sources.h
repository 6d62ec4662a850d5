// The sources of a download: which search results are the same file, and which source comes next.
// They change an entry that has a WholeFile and nothing else; one host and port is one source.
#pragma once

#include "transfer/download_record.h"

namespace velmora {

// Equal name, extension and size. Search results tell sizes in single precision, so that is what is
// compared.
bool same_file(const search_result& one, const search_result& other);

enum class AddedSource { as_another, known, too_many, dropped };
// A source that is known gets the result's file number and servent, which are the later ones; not
// while it is being fetched from.
AddedSource add_source(DownloadRecord& record, const search_result& result);
// Those of another entry of the same file behind its own, as far as there is room.
void add_sources(DownloadRecord& record, const DownloadRecord& other);

// A source that was dropped may be added again.
void forgive_source(DownloadRecord& record, const search_result& result);

// Puts the source in use behind the others and takes the first of them.
void next_source(DownloadRecord& record);
// Takes the next source and forgets the one in use; false, and nothing changes but that it counts
// as dropped, when it is the only one.
bool drop_source(DownloadRecord& record);

DownloadSource source_of(const search_result& result);
void use_source(DownloadRecord& record, DownloadSource source);

}  // namespace velmora
