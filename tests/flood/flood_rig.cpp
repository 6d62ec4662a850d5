#include "flood/flood_rig.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "support/wire.h"

namespace velmora::flood {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kAddress = "127.0.0.1";

double ms_since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void write_file(const char* path, const std::string& text) { std::ofstream(path) << text; }

bool loopback_up() {
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP;
  const bool up = ioctl(fd, SIOCSIFFLAGS, &request) == 0;
  close(fd);
  return up;
}

double resident_most_mib(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
  }
  return 0;
}

// A neighbour that pings once every 50 ms and notes when the answer comes.
void keep_pinging(Line& line, const std::atomic<bool>& over, Measured& measured) {
  unsigned number = 0;
  std::string heard;
  while (!over) {
    const std::string guid = "good" + std::to_string(100'000'000'000 + ++number);
    const auto start = Clock::now();
    if (!line.send(descriptor(guid, 0, 1, 0, ""))) break;
    bool answered = false;
    while (!answered && ms_since(start) < 5000) {
      heard += line.receive();
      answered = heard.find(guid) != std::string::npos;
      if (heard.size() > 64) heard.erase(0, heard.size() - 64);
    }
    ++measured.pings;
    measured.unanswered += answered ? 0 : 1;
    measured.ping_worst_ms = std::max(measured.ping_worst_ms, ms_since(start));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

}  // namespace

bool enter_own_network() {
  static const bool entered = [] {
    if (unshare(CLONE_NEWNET) == 0) return loopback_up();  // root needs no more
    const auto user = std::to_string(getuid());
    const auto group = std::to_string(getgid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
    write_file("/proc/self/setgroups", "deny");
    write_file("/proc/self/uid_map", "0 " + user + " 1");
    write_file("/proc/self/gid_map", "0 " + group + " 1");
    return loopback_up();
  }();
  return entered;
}

FloodRig::FloodRig(std::vector<std::string> fields) {
  std::signal(SIGPIPE, SIG_IGN);
  std::vector<std::string> arguments = {"velmorad", "--profile", folder_.path(), "--listen",
                                        kAddress};
  fields.insert(fields.end(), {"max_in_host=1000", "max_in_upload=2000"});
  for (const std::string& field : fields) arguments.insert(arguments.end(), {"--set", field});
  servent_ = std::make_unique<process::Program>(arguments);
  if (!servent_->wait_for_line("runs on profile")) throw std::runtime_error(servent_->errors());
}

FloodRig::~FloodRig() {
  over_ = true;
  for (std::thread& stranger : strangers_) stranger.join();
  for (const std::string& note : notes_) std::printf("%s\n", note.c_str());
}

void FloodRig::stranger(std::function<void(const std::atomic<bool>&)> body) {
  strangers_.emplace_back([this, body = std::move(body)] {
    static_cast<void>(
        nice(5));  // of this thread: the flood is to be fast, not to starve the flooded
    while (!begun_ && !over_) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    body(over_);
  });
}

std::string FloodRig::ask(const std::string& method, const std::string& params) {
  process::Control control(folder_);
  control.say(method, params);
  return control.line(10'000);
}

// The counters are shown anew by a timer of 500 ms, and a subscriber hears of it: twice before the
// strangers begin, which tells where the ticks belong, then all the time.
Measured FloodRig::measure(double seconds) {
  constexpr double kTick_ms = 500;
  constexpr double kEarly_ms = 20;  // by which the first ticks may themselves have been late
  Measured measured;
  Line good(kMessagePort);
  if (!good.shake_hands()) throw std::runtime_error("no handshake");
  std::atomic<bool> enough{false};
  std::thread pinging([&] { keep_pinging(good, enough, measured); });
  process::Control control(folder_);
  control.say("subscribe", R"({"controls":["bytein_stat"]})");
  const auto start = Clock::now();
  const auto next_tick = [&] {
    while (control.line(10'000).find("changed") == std::string::npos) {
      if (ms_since(start) > 60'000) throw std::runtime_error("no refresh for a minute");
    }
    return ms_since(start);
  };
  double phase = kTick_ms;
  for (int i = 0; i < 2; ++i) phase = std::min(phase, std::fmod(next_tick(), kTick_ms));

  begun_ = true;
  std::vector<double> lateness;
  const double from = ms_since(start);
  double now = from;
  while (now < from + seconds * 1000) {
    now = next_tick();
    const double late = std::fmod(now - phase + kEarly_ms, kTick_ms) - kEarly_ms;
    lateness.push_back(std::max(late, 0.0));
  }
  enough = true;
  pinging.join();
  // A tick that never came was as late as the next one.
  lateness.resize(std::max(lateness.size(), static_cast<std::size_t>((now - from) / kTick_ms)),
                  kTick_ms);
  std::sort(lateness.begin(), lateness.end());
  measured.timer_p99_ms = lateness[(lateness.size() - 1) * 99 / 100];
  measured.timer_worst_ms = lateness.back();
  measured.memory_mib = resident_most_mib(servent_->pid());
  return measured;
}

}  // namespace velmora::flood
