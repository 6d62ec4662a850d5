#include "load/options.h"

#include <charconv>
#include <stdexcept>

namespace velmora::bench {

Options::Options(int argc, char** argv) {
  for (int i = 1; i < argc; i += 2) {
    const std::string name = argv[i];
    if (!name.starts_with("--") || i + 1 >= argc) {
      throw std::runtime_error("\"--name value\" is wanted, not " + name);
    }
    given_[name.substr(2)] = argv[i + 1];
  }
}

std::string Options::text(const std::string& name) const {
  const auto found = given_.find(name);
  if (found == given_.end()) throw std::runtime_error("--" + name + " is missing");
  return found->second;
}

std::string Options::text(const std::string& name, const std::string& otherwise) const {
  return given_.contains(name) ? text(name) : otherwise;
}

std::uint64_t Options::number(const std::string& name) const {
  const std::string given = text(name);
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(given.data(), given.data() + given.size(), value);
  if (error != std::errc() || end != given.data() + given.size()) {
    throw std::runtime_error("--" + name + " wants a number, not " + given);
  }
  return value;
}

std::uint64_t Options::number(const std::string& name, std::uint64_t otherwise) const {
  return given_.contains(name) ? number(name) : otherwise;
}

}  // namespace velmora::bench
