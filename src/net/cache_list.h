// The rows of lcache ("Available hosts"): a view over the host cache, as many rows as
// cachemax_config allows. That setting limits what is shown, never the cache.
#pragma once

#include <string>

#include "form/form.h"
#include "net/host_cache.h"

namespace velmora {

class CacheList : public ListSource {
 public:
  CacheList(Form& form, const HostCache& cache);
  ~CacheList() override;

  // Shows the cache anew, with the settings of now.
  void display_cache();

  [[nodiscard]] std::size_t rows() const override { return cache_.rows(); }
  // "Hosts", "Files", "Size Kb", "Hop", "TTL", "Sock" (the connection on which the pong came).
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::string row_key(std::size_t row) const override;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const override;

 private:
  Form& form_;
  const HostCache& cache_;
};

}  // namespace velmora
