#include "transfer/farewells.h"

#include <utility>

namespace velmora {

class Farewells::Farewell : public SocketEvents {
 public:
  Farewell(Farewells& all, std::unique_ptr<Socket> connection)
      : connection_(std::move(connection)),
        limit_(all.loop_.make_timer(kFarewellMs, [this, &all] { all.over(*this); })),
        all_(all) {
    limit_->set_enabled(true);
    connection_->set_events(this);
  }

  void on_connect() override {}
  void on_connect_failed() override {}
  void on_read(std::string_view) override {}
  void on_disconnect() override { all_.over(*this); }

 private:
  std::unique_ptr<Socket> connection_;
  std::unique_ptr<Timer> limit_;
  Farewells& all_;
};

Farewells::Farewells(EventLoop& loop) : loop_(loop) {}

Farewells::~Farewells() = default;

void Farewells::leave(std::unique_ptr<Socket> connection) {
  if (!connection) return;
  if (open_.size() >= kMostFarewells) open_.pop_front();
  open_.push_back(std::make_unique<Farewell>(*this, std::move(connection)));
}

void Farewells::close_all() { open_.clear(); }

// Ends the caller, which does nothing more.
void Farewells::over(const Farewell& farewell) {
  open_.remove_if([&](const auto& open) { return open.get() == &farewell; });
}

}  // namespace velmora
