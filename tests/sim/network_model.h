// A second, independent account of one servent's message side: from what the simulation recorded
// of its host (socket events with their bytes) and from what a person did there, it works out every
// traffic counter, every connection's Sent/Recv/Drop, the debug lines, and every byte the servent
// must have written. It predicts each write before it sees it and complains about any difference.
// It is no servent: it owns no socket and shares no code with the program's network or protocol.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model_descriptors.h"
#include "platform/sim/sim_world.h"

namespace velmora::model {

struct Settings {
  Identity identity;
  std::size_t max_in = 2;
  std::int64_t clock_at_zero_s = 0;  // seconds of the day at virtual time 0
  std::int64_t started_us = 0;       // when the servent was started
};

// What a person did, and how many transcript entries there were before.
struct PersonAct {
  enum Kind { more, search, leave };
  Kind kind = more;
  std::size_t position = 0;
  std::int64_t time_us = 0;
  std::string text = {};  // of a search
  std::size_t row = 0;    // of lHosts, for leave
};

// Single precision where the counters are.
struct Counters {
  double messages = 0;
  double bytes_in = 0;
  double bytes_out = 0;
  float dropped = 0;
  float route_errors = 0;
  float pings_in = 0;
  float pings_out = 0;
  float my_pings_in = 0;
  float my_pings_out = 0;
  float pongs_in = 0;
  float pongs_out = 0;
  float my_pongs_in = 0;
  float my_pongs_out = 0;
  float queries_in = 0;
  float hits_in = 0;
  float pushes_in = 0;
  float unknown = 0;
};

class NetworkModel {
 public:
  explicit NetworkModel(Settings settings);

  // Goes through the entries of this host and the acts, in order, up to the end.
  void replay(const std::vector<sim::TranscriptEntry>& transcript,
              const std::vector<PersonAct>& acts, std::int64_t end_us);

  // Label name and the text it shows.
  [[nodiscard]] std::vector<std::pair<std::string, std::string>> labels() const;
  // "Sent/Recv/Drop" of rows 1 and up.
  [[nodiscard]] std::vector<std::string> host_counts() const;
  [[nodiscard]] const Lines& log() const { return log_; }
  [[nodiscard]] const Lines& complaints() const { return complaints_; }
  [[nodiscard]] std::size_t refused() const { return refused_; }
  [[nodiscard]] std::size_t fallen_silent() const { return fallen_silent_; }
  // Turns that ended with a rest of a chunk still waiting.
  [[nodiscard]] std::size_t postponed() const { return postponed_; }

 private:
  using Time = std::int64_t;  // microseconds

  struct Slot {
    int state = 0;  // 1 opening, 2 connected, 255 closing, below 1 free
    bool incoming = false;
    float sent = 0;
    float received = 0;
    float dropped = 0;
    int ticks = 0;
    std::uint64_t socket = 0;
    std::string peer = {};
    Time opened_at = 0;
    std::optional<Time> timeout_at = {};
    std::optional<Time> free_at = {};
    std::string rest = {};       // of a chunk with more descriptors than one turn handles
    std::string unwritten = {};  // predicted, not seen yet
  };
  struct Seen {
    std::string guid = std::string(16, '\0');
    std::size_t connection = 0;
    unsigned function = 0;
    bool ours = false;
  };

  void act(const PersonAct& act);
  void press_more(Time now);
  void start_search(const std::string& text, Time now);
  void leave(std::size_t index, Time now);

  void happen(const sim::TranscriptEntry& event);
  void open(const sim::TranscriptEntry& event, bool incoming);
  void read(std::size_t index, const sim::TranscriptEntry& event);
  void written(std::size_t index, const sim::TranscriptEntry& event);
  void closed(const sim::TranscriptEntry& event);

  void run_timers(Time until);
  void tick(std::size_t index, Time now);
  void recount_until(Time now);
  void close(std::size_t index, Time now);
  void free(std::size_t index, Time now);

  void cut(std::size_t index, std::string_view chunk);
  bool resume_any();
  void dispatch(std::size_t index, const Descriptor& header, std::string_view data);
  void got_ping(std::size_t index, const Descriptor& header);
  void got_pong(std::size_t index, const Descriptor& header, std::string_view payload);
  void got_query(std::size_t index, const Descriptor& header, std::string_view payload);
  // To all others unless there is an only receiver.
  std::size_t forward(std::size_t from, Descriptor header, std::string_view payload,
                      std::optional<std::size_t> only = {});
  std::optional<Seen> look_up(const std::string& guid, const Seen& otherwise);

  void write(std::size_t index, const std::string& bytes);
  [[nodiscard]] std::string guid_at(Time now) const;
  [[nodiscard]] bool connected(std::size_t index) const;
  void complain(const std::string& what);

  Settings settings_;
  Counters counters_;
  std::vector<Slot> slots_{1};  // from 1
  std::map<std::uint64_t, std::size_t> index_of_;
  std::map<std::uint64_t, Time> freed_at_;  // sockets whose slot was freed or left
  std::array<Seen, 401> ring_;
  std::size_t ring_position_ = 0;
  std::size_t ping_cursor_ = 0;
  std::size_t count_in_ = 0;
  Time next_recount_ = 0;
  Time now_ = 0;
  Lines log_;
  Lines complaints_;
  std::size_t refused_ = 0;
  std::size_t fallen_silent_ = 0;
  std::size_t postponed_ = 0;
};

}  // namespace velmora::model
