#include "simulator/watched_platform.h"

#include <fmt/format.h>

#include <new>
#include <stdexcept>

#include "platform/trap.h"
#include "simulator/watched_files.h"
#include "simulator/watched_loop.h"
#include "simulator/watched_network.h"

namespace velmora::simulator {
namespace {

// Boxes are opened on the machine's side; the answer comes back to the servent's.
class WatchedScreen : public MessageBoxes, public TrayIcon, public ProgramStarter {
 public:
  explicit WatchedScreen(Seam& seam) : seam_(seam) {}
  void show(BoxIcon icon, const std::string& title, const std::string& text) override {
    const InMachine side;
    seam_.machine.boxes.show(icon, title, text);
  }
  void ask(const std::string& title, const std::string& text,
           std::function<void(bool yes)> on_answer) override {
    const InMachine side;
    if (seam_.chance.below(2) == 0) {
      seam_.open_boxes.push_back(std::move(on_answer));
      return;
    }
    seam_.machine.boxes.ask(title, text, [&seam = seam_, tell = std::move(on_answer)](bool yes) {
      seam.enter([&] { tell(yes); });
    });
  }
  void add(const std::string& tip) override {
    const InMachine side;
    seam_.machine.tray.add(tip);
  }
  void remove() override {
    const InMachine side;
    seam_.machine.tray.remove();
  }
  void open_text_file(const std::string& path) override {
    const InMachine side;
    seam_.machine.programs.open_text_file(path);
  }

 private:
  Seam& seam_;
};

}  // namespace

std::string Held::text() const {
  return fmt::format(
      "{} sockets, {} listeners, {} timers, {} files, {} listings, {} look-ups, {} locks, {} "
      "channels",
      sockets, listeners, timers, files, listings, lookups, locks, channels);
}

void machine_needs_memory() { ::operator delete(::operator new(1)); }

void Seam::enter(const std::function<void()>& event) {
  std::string error;
  try {
    const InServent side;
    event();
    if (strikes(Plant::error)) throw std::runtime_error("planted");
  } catch (const std::exception&) {
    const InMachine side;
    error = description_of_current_error();
  }
  const InMachine side;
  if (!error.empty()) watch.on_escaped(error);
  watch.on_entered();
}

struct WatchedPlatform::Parts {
  Parts(Platform machine, PlatformWatch& watch, std::uint64_t seed) : seam(machine, watch, seed) {}

  Seam seam;
  WatchedLoop loop{seam};
  WatchedNetwork network{seam};
  WatchedFiles files{seam};
  WatchedScreen screen{seam};
  WatchedControl control{seam};
  WatchedDns dns{seam};
};

WatchedPlatform::WatchedPlatform(Platform machine, PlatformWatch& watch, std::uint64_t seed)
    : parts_(std::make_unique<Parts>(machine, watch, seed)) {}

WatchedPlatform::~WatchedPlatform() = default;

Platform WatchedPlatform::platform() {
  Parts& p = *parts_;
  return {p.loop,    p.network, p.files,
          p.screen,  p.screen,  p.screen,
          p.control, p.dns,     p.seam.machine.random};
}

const Held& WatchedPlatform::held() const { return parts_->seam.held; }

void WatchedPlatform::plant(Plant fault) { parts_->seam.plant = fault; }

SeamFaults& WatchedPlatform::faults() { return parts_->seam.faults; }

void WatchedPlatform::answer_box(bool yes) {
  auto& open = parts_->seam.open_boxes;
  if (open.empty()) return;
  const auto answer = std::move(open.front());
  open.erase(open.begin());
  act([&] { answer(yes); });
}

void WatchedPlatform::forget_boxes() { parts_->seam.open_boxes.clear(); }

void WatchedPlatform::act(const std::function<void()>& action) { parts_->seam.enter(action); }

}  // namespace velmora::simulator
