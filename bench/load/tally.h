// Who must have received how much: every batch that one peer sends reaches all others once, and
// its pings are answered on the peer's own connection. Tells how many batches are still on their
// way, which bounds what a load keeps a server holding. It counts; it sends and receives nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmora::bench {

struct SentBatch {
  std::size_t peer = 0;
  std::uint64_t descriptors = 0;
  std::uint64_t copy_bytes = 0;  // as every other peer receives them
  std::uint64_t answer_bytes = 0;
  std::uint64_t identifier_sum = 0;
};

class Tally {
 public:
  Tally(std::size_t peers, std::size_t most_on_the_way)
      : rows_(peers), missing_(most_on_the_way), thresholds_(peers * most_on_the_way) {}

  [[nodiscard]] bool room() const { return sent_ - arrived_ < missing_.size(); }
  [[nodiscard]] bool all_arrived() const { return sent_ == arrived_; }
  void sent(const SentBatch& batch);
  void received(std::size_t peer, std::uint64_t copy_bytes, std::uint64_t copies,
                std::uint64_t identifier_sum);

  [[nodiscard]] std::uint64_t descriptors() const { return descriptors_; }
  // Bytes that were due and did not come; more than were due count as well.
  [[nodiscard]] std::uint64_t wrong_bytes() const;
  // Peers whose copies were not exactly the ones sent. Only where copies were read one by one.
  [[nodiscard]] std::size_t wrong_peers() const;

 private:
  struct Row {
    std::uint64_t due = 0;  // bytes
    std::uint64_t own_descriptors = 0;
    std::uint64_t own_sum = 0;
    std::uint64_t got = 0;
    std::uint64_t copies = 0;
    std::uint64_t sum = 0;
    std::uint64_t reached = 0;  // batches
  };

  std::uint64_t& threshold(std::size_t peer, std::uint64_t batch) {
    return thresholds_[peer * missing_.size() + batch % missing_.size()];
  }

  std::vector<Row> rows_;
  std::vector<std::size_t> missing_;       // peers that a batch has not reached yet
  std::vector<std::uint64_t> thresholds_;  // bytes at which a batch has reached a peer
  std::uint64_t sent_ = 0;
  std::uint64_t arrived_ = 0;
  std::uint64_t descriptors_ = 0;
  std::uint64_t sum_ = 0;
};

}  // namespace velmora::bench
