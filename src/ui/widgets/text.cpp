#include "ui/widgets/text.h"

#include <QCoreApplication>
#include <QTextDocument>
#include <algorithm>

#include "platform/utf8.h"

namespace velmora::ui {
namespace {

constexpr qsizetype kLongestTooltip = 1000;
constexpr qsizetype kTooltipLine = 80;

bool is_plain_ascii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// Letters that are drawn as nothing at all, beside the format characters.
bool is_blank_letter(char32_t c) {
  return c == 0x034F || c == 0x115F || c == 0x1160 || c == 0x17B4 || c == 0x17B5 || c == 0x3164 ||
         c == 0xFFA0;
}

bool needs_mark(char32_t c) {
  switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return true;
    default:
      // Some of these ranges hold places that are not assigned yet and just as invisible.
      return is_blank_letter(c) || (c >= 0x2060 && c <= 0x206F) || (c >= 0xE0000 && c <= 0xE0FFF);
  }
}

void append_mark(QString& text, char32_t c) {
  if (c < 0x20) {
    text += QChar(static_cast<char16_t>(0x2400 + c));  // the symbol pictures
  } else if (c == 0x7F) {
    text += QChar(u'\u2421');
  } else {
    const QString number = QString::number(static_cast<uint>(c), 16).toUpper();
    text += QLatin1String("\\u") + number.rightJustified(4, QLatin1Char('0'));
  }
}

template <class Keep>
QString marked(std::string_view bytes, Keep keep) {
  const QString source = editable(bytes);
  QString text;
  text.reserve(source.size());
  for (const char32_t c : source.toUcs4()) {
    if (!keep(c) && needs_mark(c)) {
      append_mark(text, c);
    } else {
      text += QStringView(QChar::fromUcs4(c));
    }
  }
  return text;
}

}  // namespace

QString shown(std::string_view bytes) {
  if (is_plain_ascii(bytes)) {
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
  }
  return marked(bytes, [](char32_t) { return false; });
}

QString shown_lines(std::string_view bytes) {
  std::string lines;
  lines.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool pair = bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
    if (!pair) lines += bytes[i] == '\r' ? '\n' : bytes[i];
  }
  return marked(lines, [](char32_t c) { return c == '\n' || c == '\t'; });
}

QString editable(std::string_view bytes) { return QString::fromStdString(as_utf8(bytes)); }

std::string bytes(const QString& text) { return text.toStdString(); }

std::string edited_bytes(const QString& text, std::string_view before) {
  if (!is_utf8(before)) {
    const bool fits =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
    // Bytes that happen to be UTF-8 would be read as other characters than the ones typed.
    std::string latin1 = text.toLatin1().toStdString();
    if (fits && !is_utf8(latin1)) return latin1;
  }
  return bytes(text);
}

QString plain_tooltip(const QString& text) {
  QString cut =
      text.size() > kLongestTooltip ? text.left(kLongestTooltip) + QChar(u'\u2026') : text;
  if (cut.size() <= kTooltipLine && !Qt::mightBeRichText(cut)) return cut;
  return Qt::convertFromPlainText(cut, Qt::WhiteSpaceNormal);  // escaped, and so it wraps
}

QString form_text(std::string_view source) {
  return QCoreApplication::translate("form", std::string(source).c_str());
}

QString form_caption(std::string_view source) {
  return form_text(source).replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace velmora::ui
