// The cells of a "Status" column. A transfer that runs is a bar with its status, percentage, rate
// and time left; any other row is text as everywhere. The model and the rates are not owned.
#pragma once

#include <QStringList>
#include <QStyledItemDelegate>

#include "form/control.h"

namespace velmora::ui {

class ListModel;
class RowRates;

class StatusDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  StatusDelegate(const ListModel& model, const RowRates& rates, QObject* parent = nullptr);

  // What a running transfer says, from the longest to the shortest way of saying it: "Downloading
  // 45 %  1.2 MiB/s  0:34 left", ..., "45 %". The rate is in bytes a second, 0 where not known.
  static QStringList texts(const QString& status, const RowProgress& progress, double rate);

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;

 private:
  const ListModel& model_;
  const RowRates& rates_;
};

}  // namespace velmora::ui
