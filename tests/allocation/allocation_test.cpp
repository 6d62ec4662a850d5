// Memory runs out once, at every request of a session in turn: two servents find each other, one
// searches, fetches a file and resumes, both end and save. Whatever request is refused, no error
// leaves an event, nothing is lost track of, and what is under a final name is whole.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "app/servent.h"
#include "platform/sim/sim_world.h"
#include "simulator/invariants.h"
#include "simulator/shared_world.h"
#include "simulator/watched_platform.h"

namespace velmora::simulator {
namespace {

constexpr std::size_t kFileSize = 9000;

struct Party {
  explicit Party(sim::SimWorld& world, const std::string& address)
      : host(world.add_host(address)),
        invariants(host.files()),
        platform(host.platform(), invariants, 1) {
    host.files().make_folder(kShareFolder);
    host.files().make_folder(kDownFolder);
    for (const char* peer : {"24.0.0.1", "24.0.0.2"}) host.dns().script_name(peer, "host.example");
  }

  // A program that cannot start says so and ends.
  void start(std::vector<std::string>& log) {
    ServentOptions options;
    options.set = {{"down_config", kDownFolder}, {"max_in_host", "9"},   {"speed_upload", "10"},
                   {"dns_ser", "24.0.0.9"},      {"log_upload", "true"}, {"show_dns", "true"}};
    options.echo_log = [&log](const std::string& line) {
      const InMachine side;
      log.push_back(line);
    };
    bool started = false;
    do_as_person([&] {
      servent = std::make_unique<Servent>(platform.platform(), options);
      servent->start();
      started = true;
    });
    if (!started) servent.reset();
  }
  void do_as_person(const std::function<void()>& action) {
    invariants.a_person_acts(true);
    platform.act(action);
    invariants.a_person_acts(false);
  }
  void on_form(const std::function<void(Form&)>& action) {
    if (servent) do_as_person([&] { action(servent->form()); });
  }
  std::string check(const sim::SimWorld& world) {
    if (!servent || !invariants.touched()) return {};
    return invariants.check(*servent, platform.held(), world.now_ms());
  }

  sim::SimHost& host;
  Invariants invariants;
  WatchedPlatform platform;
  std::unique_ptr<Servent> servent;
};

class Session {
 public:
  std::string run() {
    const std::string name = shared_name(2, 1, true);
    b_->host.files().put(std::string(kShareFolder) + "/" + name, shared_bytes(name, kFileSize));
    a_->start(log);
    b_->start(log);
    b_->on_form([](Form& form) {
      form.upload_config.enter(kShareFolder);
      form.scan_config.click();
    });
    a_->on_form([](Form& form) { form.new_host.enter("24.0.0.2"); });
    live(300);
    a_->on_form([](Form& form) {
      form.more_cache.click();
      form.Tsearch.enter("blue");
      form.StartDNS.click();
    });
    live(1500);
    a_->on_form([](Form& form) {
      if (form.lfound.rows() > 0) form.lfound.activate(1);
      form.resume_down.click();
    });
    live(4000);
    a_->on_form([](Form& form) { form.resume_down.click(); });
    for (Party* party : {a_.get(), b_.get()}) {
      party->on_form([](Form& form) {
        form.clear_search.click();
        form.connect_auto.click();
        form.port_config.enter("7000");
        if (form.lHosts.rows() > 0) form.lHosts.activate(1);
      });
    }
    live(12'000);  // the slots of what has ended are free again
    for (Party* party : {a_.get(), b_.get()}) end(*party);
    fetched = a_->invariants.files_finished();
    world_.reset();
    return fault_;
  }

  std::vector<std::string> log;
  std::size_t fetched = 0;

 private:
  void live(std::int64_t ms) {
    const auto stop = [this] {
      for (Party* party : {a_.get(), b_.get()}) {
        if (fault_.empty()) fault_ = party->check(*world_);
      }
      return !fault_.empty();
    };
    world_->run_until(stop, ms);
  }
  void end(Party& party) {
    if (!party.servent) return;
    party.platform.act([&] { party.servent->shutdown(); });
    note(Invariants::check_closed(party.platform.held(), false));
    party.servent.reset();
    note(Invariants::check_closed(party.platform.held(), true));
  }
  void note(const std::string& fault) {
    if (fault_.empty()) fault_ = fault;
  }

  std::unique_ptr<sim::SimWorld> world_ = std::make_unique<sim::SimWorld>(1);
  std::unique_ptr<Party> a_ = std::make_unique<Party>(*world_, "24.0.0.1");
  std::unique_ptr<Party> b_ = std::make_unique<Party>(*world_, "24.0.0.2");
  std::string fault_;
};

struct Outcome {
  std::string fault;
  std::int64_t blocks_lost = 0;
  std::uint64_t asked = 0;
  bool fetched = false;
  bool told = false;         // a line says "Out of memory"
  std::string strange_line;  // one that names the language's exception instead
};

Outcome play(std::uint64_t refuse_at, std::uint64_t in_a_row) {
  Outcome outcome;
  const std::int64_t live_before = allocation_gate.live;
  {
    Session session;
    allocation_gate.asked = 0;
    allocation_gate.refuse_at = refuse_at;
    allocation_gate.refuse_count = in_a_row;
    outcome.fault = session.run();
    outcome.asked = allocation_gate.asked;
    outcome.fetched = session.fetched > 0;
    for (const std::string& line : session.log) {
      if (line.find("Out of memory") != std::string::npos) outcome.told = true;
      if (line.find("bad_alloc") != std::string::npos) outcome.strange_line = line;
    }
  }
  allocation_gate.refuse_at = 0;
  outcome.blocks_lost = outcome.fault.empty() && outcome.strange_line.empty()
                            ? allocation_gate.live - live_before
                            : 0;
  return outcome;
}

// Every request in a full run, every so-manieth otherwise.
std::uint64_t stride() {
  const char* const text = std::getenv("VELMORA_ALLOCATION_STRIDE");
  return text == nullptr ? 1 : std::strtoull(text, nullptr, 10);
}

TEST(Allocation, EveryRequestOfASessionMayBeRefused) {
  play(0, 1);  // what a process asks for once and keeps
  const Outcome good = play(0, 1);
  ASSERT_EQ(good.fault, "");
  ASSERT_TRUE(good.fetched);
  ASSERT_FALSE(good.told);
  ASSERT_EQ(good.blocks_lost, 0);
  std::uint64_t told = 0;
  std::uint64_t played = 0;
  for (const std::uint64_t in_a_row : {1U, 3U}) {
    for (std::uint64_t n = in_a_row; n <= good.asked; n += stride()) {
      const Outcome outcome = play(n, in_a_row);
      ++played;
      if (outcome.told) ++told;
      EXPECT_EQ(outcome.fault, "") << "request " << n << ", " << in_a_row << " in a row";
      ASSERT_EQ(outcome.blocks_lost, 0) << "request " << n << ", " << in_a_row << " in a row";
      ASSERT_EQ(outcome.strange_line, "") << "request " << n;
    }
  }
  EXPECT_GT(told, played / 4);
  std::printf("%llu requests; %llu of %llu sessions had a line about it\n",
              static_cast<unsigned long long>(good.asked), static_cast<unsigned long long>(told),
              static_cast<unsigned long long>(played));
}

}  // namespace
}  // namespace velmora::simulator
