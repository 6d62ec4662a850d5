// bare_window: a Qt window with six empty lists. Says on standard error how long it took from the
// start of the program until it was painted, as "velmora --verbose" does, and ends. What the
// servent's window is measured against.
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTimer>
#include <QTreeView>
#include <cstdio>

namespace {

class Window : public QTabWidget {
 public:
  explicit Window(QElapsedTimer since_start) : since_start_(since_start) {
    for (int i = 0; i < 6; ++i) {
      auto* list = new QTreeView;
      list->setModel(new QStandardItemModel(0, 5, list));
      addTab(list, QString::number(i));
    }
    resize(760, 520);
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QTabWidget::paintEvent(event);
    QTimer::singleShot(0, this, [this] {
      std::fprintf(stderr, "window painted %lld ms after the start\n",
                   static_cast<long long>(since_start_.elapsed()));
      QApplication::quit();
    });
  }

 private:
  QElapsedTimer since_start_;
};

}  // namespace

int main(int argc, char** argv) {
  QElapsedTimer since_start;
  since_start.start();
  const QApplication application(argc, argv);
  Window window(since_start);
  window.show();
  return QApplication::exec();
}
