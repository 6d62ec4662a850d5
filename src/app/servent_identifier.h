// The identifier by which others know this servent in its query hits: the classic one, made at the
// start, or one of its own, kept in a file of the profile so that it stays the same from run to
// run. The file is one line, hexadecimal byte values joined with "-"; one that holds no identifier
// is replaced. Nothing is read or written while random identifiers are off.
#pragma once

#include <string>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/files.h"
#include "platform/random_source.h"

namespace velmora {

inline constexpr const char* kIdentifierFile = "Velmora_identifier.txt";

class ServentIdentifier {
 public:
  // None is owned.
  ServentIdentifier(std::string classic, Files& files, RandomSource& random, DebugLog& log,
                    const Behaviour& behaviour);

  // Takes the servent's own identifier up or puts it down, as the switch stands. Traps its errors
  // ("servent_identifier: "): one that could not be read or made leaves the classic one, one that
  // could not be saved is used until the program ends.
  void behaviour_changed();

  [[nodiscard]] const std::string& guid() const { return own_.empty() ? classic_ : own_; }

 private:
  std::string saved() const;

  std::string classic_;
  std::string own_;  // empty while there is none
  Files& files_;
  RandomSource& random_;
  DebugLog& log_;
  const Behaviour& behaviour_;
};

}  // namespace velmora
