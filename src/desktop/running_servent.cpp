#include "desktop/running_servent.h"

#include <utility>

namespace velmora::desktop {
namespace {

constexpr char kShow[] =
    R"({"jsonrpc":"2.0","id":1,"method":"press","params":{"control":"mnushow"}})"
    "\n";

}  // namespace

RunningServent::RunningServent(QString profile_folder, int patience_ms)
    : profile_folder_(std::move(profile_folder)) {
  patience_.setSingleShot(true);
  patience_.setInterval(patience_ms);
  connect(&socket_, &QLocalSocket::connected, this, &RunningServent::ask);
  connect(&socket_, &QLocalSocket::readyRead, this, [this] {
    if (socket_.canReadLine()) finish();
  });
  connect(&socket_, &QLocalSocket::errorOccurred, this, &RunningServent::finish);
  connect(&socket_, &QLocalSocket::disconnected, this, &RunningServent::finish);
  connect(&patience_, &QTimer::timeout, this, &RunningServent::finish);
}

void RunningServent::raise_window(std::function<void()> then) {
  then_ = std::move(then);
  patience_.start();
  socket_.connectToServer(profile_folder_ + "/control.sock");
}

void RunningServent::ask() {
  socket_.write(kShow);
  socket_.flush();
}

void RunningServent::finish() {
  const auto then = std::exchange(then_, nullptr);
  if (!then) return;
  patience_.stop();
  socket_.abort();
  then();
}

}  // namespace velmora::desktop
