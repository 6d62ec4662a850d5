// One choice of several as a row of buttons: option buttons with a text each, or page buttons with
// icon and text, whose icons the window sets. They are numbered as their option group numbers them.
// They know no control; FormBinding joins them.
#pragma once

#include <QButtonGroup>
#include <QStringList>
#include <QToolButton>
#include <QWidget>

namespace velmora::ui {

class OptionButtons : public QWidget {
  Q_OBJECT

 public:
  OptionButtons(const QStringList& texts, int first, QWidget* parent = nullptr);
  void set_chosen(int number);  // emits nothing
  [[nodiscard]] QAbstractButton* button(int number) const { return group_.button(number); }

 signals:
  void chosen(int number);

 private:
  QButtonGroup group_;
};

class PageButtons : public QWidget {
  Q_OBJECT

 public:
  PageButtons(const QStringList& texts, int first, QWidget* parent = nullptr);
  void set_chosen(int number);
  [[nodiscard]] QToolButton* button(int number) const;

 signals:
  void chosen(int number);

 private:
  QButtonGroup group_;
};

}  // namespace velmora::ui
