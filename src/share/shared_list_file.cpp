#include "share/shared_list_file.h"

#include <utility>

#include "platform/error.h"
#include "platform/list_file.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

SharedFile read_row(ListFileReader& reader) {
  SharedFile file;
  reader.number_field();  // the file's own row number counts for nothing
  reader.comma();
  file.name = reader.string_field();
  reader.comma();
  file.size = to_int32(reader.number_field());
  if (file.size < 0) throw PlatformError(Errc::overflow);
  reader.comma();
  file.path = reader.string_field();
  reader.comma();
  file.uploads = to_int16(reader.number_field());
  reader.line_end();
  return file;
}

}  // namespace

std::string shared_list_text(const OneBased<SharedFile>& files) {
  std::string text = "\"Rows in this file:\"," + std::to_string(files.upper_bound());
  text += kListLineEnd;
  text += "\"Format: Row #, Filename, Size, Path, Uploads\"";
  text += kListLineEnd;
  for (std::size_t row = 1; row <= files.upper_bound(); ++row) {
    const SharedFile& file = files.at(row);
    text += std::to_string(row) + ',';
    put_quoted(text, file.name);
    text += ',' + std::to_string(file.size) + ',';
    put_quoted(text, file.path);
    text += ',' + std::to_string(file.uploads);
    text += kListLineEnd;
  }
  return text;
}

void read_shared_list(std::string_view text, OneBased<SharedFile>& files, std::int64_t& total) {
  ListFileReader reader(text);
  reader.string_field();
  reader.comma();
  const std::int16_t rows = to_int16(reader.number_field());
  if (rows < 0) throw PlatformError(Errc::subscript_out_of_range);
  reader.line_end();
  reader.string_field();
  reader.line_end();
  for (int row = 1; row <= rows; ++row) {
    SharedFile file = read_row(reader);
    files.grow_to(files.upper_bound() + 1);  // by what is there, never by what the file claims
    total += file.size;
    files.at(files.upper_bound()) = std::move(file);
  }
}

std::string save_shared(Files& files, const std::string& file_name, const SharedIndex& index) {
  return trapped("save_shared: ",
                 [&] { files.save(file_name, shared_list_text(index.shared_files())); });
}

std::string load_shared(Files& files, const std::string& file_name, SharedIndex& index,
                        std::string& total) {
  return trapped("load_shared: ", [&] {
    const std::string text = files.read_whole(file_name, kMaxSharedListFile);
    OneBased<SharedFile> list(kMaxSharedFiles);
    std::int64_t sum = 0;
    try {
      read_shared_list(text, list, sum);
    } catch (...) {
      index.replace(std::move(list));
      throw;
    }
    index.replace(std::move(list));
    total = std::to_string(sum);
  });
}

}  // namespace velmora
