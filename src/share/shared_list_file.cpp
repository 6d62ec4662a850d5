#include "share/shared_list_file.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"

namespace velmora {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

void put_quoted(std::string& text, std::string_view field) {
  text += '"';
  for (const char byte : field) {
    if (byte == '"') text += '"';
    text += byte;
  }
  text += '"';
}

// Takes the fields of a text one after another.
class FieldReader {
 public:
  explicit FieldReader(std::string_view text) : text_(text) {}

  std::string string_field() {
    if (peek() != '"') malformed();
    std::string field;
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == '"') {
        if (at_ + 1 >= text_.size() || text_[at_ + 1] != '"') {
          ++at_;
          return field;
        }
        ++at_;
      }
      field += text_[at_];
    }
    throw PlatformError(Errc::input_past_end);  // the closing quote is missing
  }

  double number_field() {
    if (at_end()) throw PlatformError(Errc::input_past_end);
    const std::size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
    const double value = number(text_.substr(at_, end - at_));
    at_ = end;
    return value;
  }

  void comma() {
    if (peek() != ',') malformed();
    ++at_;
  }

  // CR LF, either alone, or the end of the text.
  void line_end() {
    if (at_end()) return;
    if (peek() != '\r' && peek() != '\n') malformed();
    const bool carriage_return = peek() == '\r';
    ++at_;
    if (carriage_return && !at_end() && peek() == '\n') ++at_;
  }

 private:
  [[nodiscard]] bool at_end() const { return at_ >= text_.size(); }
  [[nodiscard]] char peek() const {
    if (at_end()) throw PlatformError(Errc::input_past_end);
    return text_[at_];
  }
  [[noreturn]] static void malformed() { throw PlatformError(Errc::type_mismatch); }

  std::string_view text_;
  std::size_t at_ = 0;
};

SharedFile read_row(FieldReader& reader) {
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
  text += kLineEnd;
  text += "\"Format: Row #, Filename, Size, Path, Uploads\"";
  text += kLineEnd;
  for (std::size_t row = 1; row <= files.upper_bound(); ++row) {
    const SharedFile& file = files.at(row);
    text += std::to_string(row) + ',';
    put_quoted(text, file.name);
    text += ',' + std::to_string(file.size) + ',';
    put_quoted(text, file.path);
    text += ',' + std::to_string(file.uploads);
    text += kLineEnd;
  }
  return text;
}

void read_shared_list(std::string_view text, OneBased<SharedFile>& files, std::int64_t& total) {
  FieldReader reader(text);
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
