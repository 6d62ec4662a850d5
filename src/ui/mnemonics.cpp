#include "ui/mnemonics.h"

#include <QAbstractButton>
#include <QLabel>
#include <QSet>

namespace velmora::ui {
namespace {

// The first letter of a word is easiest to find, then any letter.
qsizetype free_letter(const QString& caption, const QSet<QChar>& taken) {
  for (const bool word_starts : {true, false}) {
    for (qsizetype at = 0; at < caption.size(); ++at) {
      const QChar letter = caption[at].toLower();
      const bool starts = at == 0 || caption[at - 1].isSpace();
      if (letter >= u'a' && letter <= u'z' && !taken.contains(letter) && starts == word_starts) {
        return at;
      }
    }
  }
  return -1;
}

// The caption with its letter marked; as it is when it has none or one already.
QString marked(const QString& caption, QSet<QChar>& taken) {
  if (caption.contains(u'&')) return caption;
  const qsizetype at = free_letter(caption, taken);
  if (at < 0) return caption;
  taken.insert(caption[at].toLower());
  return QString(caption).insert(at, u'&');
}

// A value that is only shown is no place to go to.
bool takes_keys(const QWidget& widget) {
  return (widget.focusPolicy() & Qt::TabFocus) != 0 || widget.focusProxy() != nullptr;
}

}  // namespace

void assign_mnemonics(const QWidget& page) {
  QSet<QChar> taken;
  for (QWidget* widget : page.findChildren<QWidget*>()) {
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
      button->setText(marked(button->text(), taken));
    } else if (auto* label = qobject_cast<QLabel*>(widget); label && label->buddy() != nullptr) {
      if (takes_keys(*label->buddy())) label->setText(marked(label->text(), taken));
    }
  }
}

}  // namespace velmora::ui
