// A servent and the tests' independent model of it see the same bytes on the same wires: every
// counter, every connection's counts and every byte written must be the same.
#include <array>

#include "fuzzed_parts.h"
#include "sim/network_model.h"
#include "sim/shown_counters.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

class Comparison {
 public:
  Comparison() : host_(world_.add_host("10.0.0.1")) {
    world_.record();
    world_.set_local_time({2000, 6, 30, 14, 5, 0});
    world_.add_host("10.0.0.2");
    host_.files().put("/share/blue river.txt", std::string(1234, 'b'));
    ServentOptions options;
    options.set = {{"max_in_host", "9"}};
    servent_ = std::make_unique<Servent>(host_.platform(), std::move(options));
    servent_->start();
    servent_->form().upload_config.enter("/share");
    servent_->form().scan_config.click();
    world_.run_for(100);
    for (auto& peer : peers_) join(peer);
  }

  void step(Input& input) {
    const unsigned choice = input.byte();
    auto& peer = peers_[choice % peers_.size()];
    switch (choice / 4 % 8) {
      case 0:
        peer->close();
        break;
      case 1:
        join(peer);
        break;
      case 2:
        world_.run_for(100 * static_cast<std::int64_t>(input.byte()));
        break;
      case 3:
        press_more();
        break;
      default:
        peer->send(input.piece());
    }
    world_.run_for(20);
  }

  void compare() {
    world_.run_for(600);
    model::NetworkModel model(
        {.identity = {.address = "10.0.0.1", .files = {{"blue river.txt", 1234}}},
         .max_in = 9,
         .clock_at_zero_s = 14 * 3600 + 5 * 60});
    model.replay(world_.transcript(), acts_, world_.now_us());
    for (const std::string& complaint : model.complaints())
      std::fprintf(stderr, "%s\n", complaint.c_str());
    require(model.complaints().empty(), "every byte written is the model's");
    require(model::shown_labels(servent_->form()) == model.labels(),
            "every counter is the model's");
    require(model::shown_host_counts(servent_->form()) == model.host_counts(),
            "every connection's counts are the model's");
  }

 private:
  void join(std::unique_ptr<sim::RawPeer>& peer) {
    peer = world_.connect_raw("10.0.0.2", "10.0.0.1", 6346);
    world_.run_for(5);
    peer->send(kHello);
    world_.run_for(5);
  }
  void press_more() {
    acts_.push_back({.kind = model::PersonAct::more,
                     .position = world_.transcript().size(),
                     .time_us = world_.now_us()});
    servent_->form().more_cache.click();
  }

  sim::SimWorld world_;
  sim::SimHost& host_;
  std::unique_ptr<Servent> servent_;
  std::array<std::unique_ptr<sim::RawPeer>, 3> peers_;
  std::vector<model::PersonAct> acts_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Comparison comparison;
  Input input(data, size);
  for (int i = 0; i < 60 && !input.empty(); ++i) comparison.step(input);
  comparison.compare();
  return 0;
}
