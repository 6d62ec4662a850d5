// What the network found: one record for each file entry of every query hit that was for us. The
// array only grows, until the user clears it, within a budget of rows and bytes; lfound is redrawn
// one second after the last hit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "form/form.h"
#include "net/questions.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"
#include "platform/one_based.h"
#include "transfer/hit_filter.h"
#include "transfer/result_list.h"
#include "transfer/search_result.h"

namespace velmora {

inline constexpr std::size_t kMaxSearchResults = 200'000;
// Names are as long as a descriptor allows, so the rows alone do not bound the memory.
inline constexpr std::size_t kMaxSearchResultBytes = std::size_t{64} << 20;
inline constexpr int kDisplayDelayMs = 1000;

class SearchResults : public QueryHitIntake {
 public:
  // on_display_delay redraws the host cache list, which shares the timer. The filter (not owned,
  // may be none) sees every hit first.
  SearchResults(EventLoop& loop, Form& form, DebugLog& log, HostNames& names,
                std::function<void()> on_display_delay, const Behaviour& behaviour = kClassic,
                HitFilter* filter = nullptr);

  // Traps its errors ("Error: set_query_reply_view: "), as does display_query_reply.
  void set_query_reply_view(const QueryHit& hit, std::int16_t search = 0) override;
  void display_query_reply();
  // Has both lists redrawn within the delay, however often it is called.
  void display_soon() { display_delay_->set_enabled(true); }
  void clear_search();

  // The results behind a row of lfound, its first one first, each of another source; outside the
  // rows "Subscript out of range".
  [[nodiscard]] std::vector<std::size_t> results_of_row(std::size_t row) const;

  [[nodiscard]] OneBased<search_result>& search_results() { return search_results_; }
  [[nodiscard]] const OneBased<search_result>& search_results() const { return search_results_; }

 private:
  void add(const QueryHit& hit, std::int16_t search);
  void display_delay_Timer();

  Form& form_;
  DebugLog& log_;
  HostNames& names_;
  HitFilter* filter_;
  std::function<void()> on_display_delay_;
  OneBased<search_result> search_results_{kMaxSearchResults};
  std::size_t name_bytes_ = 0;
  ResultList list_;
  std::unique_ptr<Timer> display_delay_;
};

}  // namespace velmora
