#include "simulator/resident.h"

#include <fmt/format.h>

#include <utility>

#include "simulator/random_hand.h"
#include "simulator/shared_world.h"

namespace velmora::simulator {
namespace {

constexpr std::size_t kMostFiles = 4;
constexpr std::size_t kMostFileBytes = 20'000;

}  // namespace

Resident::Resident(sim::SimWorld& world, std::size_t number, std::uint64_t seed, Tell tell)
    : world_(world),
      number_(number),
      host_(world.add_host(address_of(number))),
      chance_(seed),
      tell_(std::move(tell)),
      invariants_(host_.files()),
      platform_(host_.platform(), invariants_, seed ^ 0x5eed) {
  share_files();
}

Resident::~Resident() = default;

std::string Resident::address_of(std::size_t number) { return fmt::format("24.0.0.{}", number); }

void Resident::share_files() {
  sim::SimFiles& files = host_.files();
  files.make_folder(kShareFolder);
  files.make_folder(kDownFolder);
  for (std::size_t i = chance_.below(kMostFiles + 1); i > 0; --i) {
    const std::string name = shared_name(number_, i, chance_.below(3) == 0);
    const std::size_t size = 1 + chance_.below(kMostFileBytes);
    files.put(std::string(kShareFolder) + "/" + name, shared_bytes(name, size));
  }
}

void Resident::start() {
  ServentOptions options;
  options.set = {{"down_config", kDownFolder},
                 {"ttlMax_config", std::to_string(2 + chance_.below(2))},
                 {"max_in_host", "20"},
                 {"max_out_host", std::to_string(1 + chance_.below(3))},
                 {"log_upload", chance_.below(2) == 0 ? "true" : "false"},
                 {"dns_ser", chance_.below(2) == 0 ? "24.0.0.1" : ""},
                 {"speed_upload", std::to_string(10 + chance_.below(100))}};
  options.echo_log = [this](const std::string& line) {
    const InMachine side;
    if (tell_) tell_(host_.address() + " logs: " + line);
  };
  bool started = false;
  invariants_.a_person_acts(true);
  platform_.act([&] {
    servent_ = std::make_unique<Servent>(platform_.platform(), options);
    servent_->on_ended = [this] { ended_ = true; };
    servent_->start();
    started = true;
  });
  invariants_.a_person_acts(false);
  if (!started) return kill(false);  // it says so and ends
  do_on_form([](Form& form) {
    form.upload_config.enter(kShareFolder);
    form.scan_config.click();
  });
}

void Resident::do_on_form(const std::function<void(Form&)>& action) {
  if (!servent_) return;
  invariants_.a_person_acts(true);
  platform_.act([&] { action(servent_->form()); });
  invariants_.a_person_acts(false);
}

void Resident::kill(bool power_too) {
  platform_.forget_boxes();
  servent_.reset();
  ended_ = false;
  if (power_too) host_.files().crash();
  invariants_.forget_servent();
}

std::string Resident::end() {
  if (!servent_) return {};
  platform_.act([&] { servent_->shutdown(); });
  std::string fault = Invariants::check_closed(platform_.held(), false);
  kill(false);
  if (fault.empty()) fault = Invariants::check_closed(platform_.held(), true);
  return fault;
}

std::string Resident::check() {
  if (!servent_) return {};
  if (ended_) return end();
  return invariants_.check(*servent_, platform_.held(), world_.now_ms());
}

std::string Resident::act(const std::vector<std::string>& addresses) {
  std::string told;
  const std::size_t what = chance_.below(25);
  if (what == 24) platform_.answer_box(chance_.below(2) == 0);
  do_on_form([&](Form& form) { act_on(form, addresses, what, told); });
  return told;
}

void Resident::act_on(Form& form, const std::vector<std::string>& addresses, std::size_t what,
                      std::string& told) {
  switch (what) {
    case 0:
    case 1:
    case 2:
    case 3: {
      const std::string& to = addresses.at(chance_.below(addresses.size()));
      told = "connects to " + to;
      return form.new_host.enter(to);
    }
    case 4:
      told = "presses more_cache";
      return form.more_cache.click();
    case 5:
    case 6:
    case 7:
      told = "searches";
      return form.Tsearch.enter(chance_.below(3) == 0 ? "river" : "blue");
    case 8:
    case 9:
    case 10:
      if (form.lfound.rows() == 0) return;
      told = "queues a result and resumes";
      form.lfound.activate(1 + chance_.below(form.lfound.rows()));
      return form.resume_down.click();
    case 11:
    case 12:
      told = "resumes";
      return form.resume_down.click();
    case 13:
      told = "scans";
      return form.scan_config.click();
    case 14:
      told = "presses connect_auto";
      return form.connect_auto.click();
    case 15:
      told = "presses StartDNS";
      return form.StartDNS.click();
    case 16:
      if (form.lHosts.rows() == 0) return;
      told = "ends a connection";
      return form.lHosts.activate(1 + chance_.below(form.lHosts.rows()));
    case 17:
      if (form.lupload.rows() == 0) return;
      told = "stops an upload";
      return form.lupload.activate(1 + chance_.below(form.lupload.rows()));
    case 18:
      told = "changes the folder of downloads";
      return form.down_config.set_text(chance_.below(3) == 0 ? "/nowhere" : kDownFolder);
    case 19:
      if (chance_.below(8) != 0) return;
      told = "exits";
      return form.mnuexit.click();
    case 20:
      told = "clears the cache";
      return form.clear_cache.click();
    case 24:
      told = "answers an open question, if there is one";
      return;
    default:
      told = "touches " + RandomHand(chance_).touch(form);
  }
}

}  // namespace velmora::simulator
