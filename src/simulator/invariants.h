// What must hold for one servent after every event, whatever its peers, its disk and its person do.
// Each check returns the empty text or says in a sentence what does not hold. It changes nothing.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/servent.h"
#include "platform/sim/sim_files.h"
#include "simulator/forward_witness.h"
#include "simulator/platform_watch.h"

namespace velmora::simulator {

class Invariants : public PlatformWatch {
 public:
  explicit Invariants(const sim::SimFiles& files) : files_(files) {}

  // After every event that the servent has handled.
  std::string check(Servent& servent, const Held& held, std::int64_t now_ms);
  // After the ordered shutdown, and after the servent is gone.
  static std::string check_closed(const Held& held, bool gone);
  // The servent went without a shutdown; what it knew of its connections is void.
  void forget_servent();

  [[nodiscard]] bool touched() const { return touched_; }
  [[nodiscard]] const ForwardWitness& witness() const { return witness_; }
  [[nodiscard]] std::size_t files_finished() const { return finished_.size(); }
  // While allocations fail, a face may be handed the error of what its person did.
  void a_person_acts(bool acts) { person_acts_ = acts; }

  void on_entered() override { touched_ = true; }
  void on_escaped(const std::string& error) override;
  void on_read(std::uint64_t socket, std::string_view data) override {
    witness_.read(socket, data);
  }
  void on_write(std::uint64_t socket, std::string_view data) override;
  void on_closed(std::uint64_t socket) override { witness_.closed(socket); }
  void on_saved(const std::string& path, std::string_view data) override;
  void on_loaded(const std::string& path, std::string_view data) override;
  void on_finished(const std::string& folder, const std::string& name) override;

 private:
  std::string check_connections(const ServentParts& parts, std::int64_t now_ms);
  std::string check_transfers(const ServentParts& parts, const Held& held);
  std::string check_form(Form& form) const;
  std::string check_finished(const std::string& path) const;
  void note(std::string fault);

  const sim::SimFiles& files_;
  ForwardWitness witness_;
  bool touched_ = false;
  bool person_acts_ = false;
  std::string fault_;                                   // noted by the watch
  std::vector<std::int64_t> closing_since_;             // by slot; -1: is not closing
  std::map<std::string, std::size_t> saved_;            // hash of what each path holds
  std::set<std::string> finished_;                      // paths of final names
  std::set<std::pair<std::string, std::string>> done_;  // path and size that were looked at
};

}  // namespace velmora::simulator
