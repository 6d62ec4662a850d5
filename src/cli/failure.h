// Why a verb did not succeed, in words for a person. Thrown anywhere in the program, caught once in
// main(), which writes it to standard error and ends with status 1.
#pragma once

#include <stdexcept>

namespace velmora::cli {

class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A person ended the program with a signal while it waited.
class Interrupted : public Failure {
 public:
  Interrupted() : Failure("interrupted") {}
};

}  // namespace velmora::cli
