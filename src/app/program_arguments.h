// The command line that the servent's programs share, with a screen and without: which profile,
// which address, which fields to set. It reads and checks the words; it opens nothing.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

struct ProgramArguments {
  std::string profile;  // empty: the usual one
  std::string listen;   // empty: all addresses
  std::vector<std::pair<std::string, std::string>> set;
  bool verbose = false;
  bool minimized = false;  // of a program with a window
};

struct ProgramText {
  std::string name;
  std::string version;
  std::string description;  // the first lines of the help
  bool has_window = false;
};

inline constexpr int kWrongCommandLine = 2;

// Fills the arguments; or answers a help or version wish or a wrong command line on the terminal
// and returns the program's exit status.
std::optional<int> read_program_arguments(int argc, char** argv, const ProgramText& text,
                                          ProgramArguments& arguments);

}  // namespace velmora
