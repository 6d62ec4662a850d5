// Patterns for names, as people write them: separated by ";", "*" for any letters, "?" for one
// byte, large and small letters of ASCII the same. Blanks around a pattern do not count.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

inline constexpr std::size_t kMaxNamePatterns = 100;  // further ones are not looked at

class NamePatterns {
 public:
  explicit NamePatterns(std::string_view text);
  // Whether one of the patterns is the whole name.
  [[nodiscard]] bool fit(std::string_view name) const;

 private:
  std::vector<std::string> patterns_;  // upper-cased, none empty
};

}  // namespace velmora
