#include "platform/list_file.h"

#include <fmt/format.h>

#include <chrono>

#include "platform/error.h"
#include "platform/number.h"

namespace velmora {
namespace {

[[noreturn]] void malformed() { throw PlatformError(Errc::type_mismatch); }

bool ends_number(char c) { return c == ',' || c == '\r' || c == '\n'; }

bool is_date(const LocalTime& t) {
  const auto part = [](int value) { return static_cast<unsigned>(value); };
  const std::chrono::year_month_day day{
      std::chrono::year(t.year), std::chrono::month(part(t.month)), std::chrono::day(part(t.day))};
  return day.ok() && t.hour < 24 && t.minute < 60 && t.second < 60;
}

}  // namespace

void put_quoted(std::string& text, std::string_view field) {
  text += '"';
  for (const char byte : field) {
    if (byte == '"') text += '"';
    text += byte;
  }
  text += '"';
}

void put_date(std::string& text, const LocalTime& date) {
  text += fmt::format("#{:04}-{:02}-{:02} {:02}:{:02}:{:02}#", date.year, date.month, date.day,
                      date.hour, date.minute, date.second);
}

std::string ListFileReader::string_field() {
  if (peek() != '"') malformed();
  std::string field;
  for (++at_;; ++at_) {
    const std::size_t quote = text_.find('"', at_);
    if (quote == std::string_view::npos) throw PlatformError(Errc::input_past_end);
    field += text_.substr(at_, quote - at_);
    at_ = quote + 1;
    if (at_end() || text_[at_] != '"') return field;
    field += '"';
  }
}

double ListFileReader::number_field() {
  if (at_end()) throw PlatformError(Errc::input_past_end);
  std::size_t end = at_;
  while (end < text_.size() && !ends_number(text_[end])) ++end;
  const double value = number(text_.substr(at_, end - at_));
  at_ = end;
  return value;
}

LocalTime ListFileReader::date_field() {
  LocalTime date;
  take('#');
  date.year = digits(4);
  take('-');
  date.month = digits(2);
  take('-');
  date.day = digits(2);
  if (peek() == ' ') {
    ++at_;
    date.hour = digits(2);
    take(':');
    date.minute = digits(2);
    take(':');
    date.second = digits(2);
  }
  take('#');
  if (!is_date(date)) malformed();
  return date;
}

void ListFileReader::comma() { take(','); }

void ListFileReader::line_end() {
  if (at_end()) return;
  if (peek() != '\r' && peek() != '\n') malformed();
  const bool carriage_return = peek() == '\r';
  ++at_;
  if (carriage_return && !at_end() && peek() == '\n') ++at_;
}

char ListFileReader::peek() const {
  if (at_end()) throw PlatformError(Errc::input_past_end);
  return text_[at_];
}

void ListFileReader::take(char wanted) {
  if (peek() != wanted) malformed();
  ++at_;
}

int ListFileReader::digits(int count) {
  int value = 0;
  for (int i = 0; i < count; ++i) {
    const char digit = peek();
    if (digit < '0' || digit > '9') malformed();
    value = value * 10 + (digit - '0');
    ++at_;
  }
  return value;
}

}  // namespace velmora
