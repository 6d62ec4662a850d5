#include "load/tally.h"

#include <algorithm>

namespace velmora::bench {

void Tally::sent(const SentBatch& batch) {
  descriptors_ += batch.descriptors;
  sum_ += batch.identifier_sum;
  rows_[batch.peer].own_descriptors += batch.descriptors;
  rows_[batch.peer].own_sum += batch.identifier_sum;
  missing_[sent_ % missing_.size()] = rows_.size();
  for (std::size_t peer = 0; peer < rows_.size(); ++peer) {
    rows_[peer].due += peer == batch.peer ? batch.answer_bytes : batch.copy_bytes;
    threshold(peer, sent_) = rows_[peer].due;
  }
  ++sent_;
  received(batch.peer, 0, 0, 0);  // who sent may have nothing to wait for
}

void Tally::received(std::size_t peer, std::uint64_t copy_bytes, std::uint64_t copies,
                     std::uint64_t identifier_sum) {
  Row& row = rows_[peer];
  row.got += copy_bytes;
  row.copies += copies;
  row.sum += identifier_sum;
  while (row.reached < sent_ && row.got >= threshold(peer, row.reached)) {
    if (--missing_[row.reached % missing_.size()] == 0) ++arrived_;
    ++row.reached;
  }
}

std::uint64_t Tally::wrong_bytes() const {
  std::uint64_t wrong = 0;
  for (const Row& row : rows_) wrong += std::max(row.due, row.got) - std::min(row.due, row.got);
  return wrong;
}

std::size_t Tally::wrong_peers() const {
  return static_cast<std::size_t>(std::count_if(rows_.begin(), rows_.end(), [&](const Row& row) {
    return row.copies != descriptors_ - row.own_descriptors || row.sum != sum_ - row.own_sum;
  }));
}

}  // namespace velmora::bench
