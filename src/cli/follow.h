// Follows entries of the download list until each of them has ended: progress bars on a terminal,
// else a line for every change of a status and every tenth of a file. With whole files switched on
// one has ended when it is done, or when every source has failed and the servent waits before it
// tries again. The downloads are the servent's and go on without this.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/context.h"
#include "cli/progress.h"

namespace velmora::cli {

class Follow {
 public:
  explicit Follow(Context& context) : context_(context) {}
  // `status`: what the entry showed before it was started (again).
  void add(std::size_t row, const std::string& name, const std::string& status);
  // Follows them all; raises a Failure when one ends otherwise than "Done". Needs a subscription
  // to `ldown`.
  void run();

 private:
  struct Entry {
    std::size_t row;
    std::string name;
    std::string status_before;
    std::string status;
    std::uint64_t size = 0;
    RateMeter meter;
    ToldStatus told;
    bool over = false;
    double ended_at = -1;  // seconds since the start; below 0: it goes on
    std::string source;    // the one in use
  };

  void look();
  void look_at(Entry& entry, const List& list);
  [[nodiscard]] bool over(const Entry& entry, double passed) const;
  static void tell(Entry& entry);
  [[nodiscard]] bool all_over() const;
  void draw();
  void report() const;

  Context& context_;
  std::vector<Entry> entries_;
  Clock::time_point started_;
  bool whole_files_ = false;  // the servent goes from source to source
  std::size_t lines_drawn_ = 0;
};

}  // namespace velmora::cli
