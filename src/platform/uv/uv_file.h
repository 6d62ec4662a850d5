// An open regular file of the real file system. Calls are synchronous.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/uv/uv_descriptor.h"

namespace velmora::uv {

// Writes all at the descriptor's own position, or raises an error.
void write_all(int fd, std::string_view data);

class UvFile : public File {
 public:
  explicit UvFile(Descriptor file) : file_(std::move(file)) {}

  [[nodiscard]] std::uint64_t size() const override;
  void read_into(std::string& data, std::uint64_t offset, std::size_t most) override;
  void write(std::uint64_t offset, std::string_view data) override;
  void truncate(std::uint64_t size) override;
  void sync() override;

 private:
  Descriptor file_;
};

}  // namespace velmora::uv
