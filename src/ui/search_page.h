// The page "Search": the search field, its three slots and the results. It lays out the widgets
// that the binding makes for its controls; the keyboard focus of the page is its search field.
// While there are no results, the list says what to do about it; a result that was queued is noted
// in the status bar. The servent is not owned.
#pragma once

#include <QWidget>
#include <functional>

#include "app/servent.h"

namespace velmora::ui {

class FormBinding;
class ListTable;

class SearchPage final : public QWidget {
  Q_OBJECT

 public:
  SearchPage(Servent& servent, FormBinding& bind, QWidget* parent = nullptr);

 private:
  void follow_form(FormBinding& bind);
  [[nodiscard]] QString empty_hint() const;
  [[nodiscard]] bool starts_by_itself() const;
  void queue_and_tell(const std::function<void()>& queue);

  Servent& servent_;
  ListTable* results_;
  float sent_before_ = 0;  // queries, when the results were last cleared
};

}  // namespace velmora::ui
