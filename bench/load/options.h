// The command line of a load program: "--name value" pairs and nothing else. What is missing or not
// a number raises std::runtime_error with the name.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace velmora::bench {

class Options {
 public:
  Options(int argc, char** argv);
  [[nodiscard]] std::string text(const std::string& name) const;
  [[nodiscard]] std::string text(const std::string& name, const std::string& otherwise) const;
  [[nodiscard]] std::uint64_t number(const std::string& name) const;
  [[nodiscard]] std::uint64_t number(const std::string& name, std::uint64_t otherwise) const;

 private:
  std::map<std::string, std::string> given_;
};

}  // namespace velmora::bench
