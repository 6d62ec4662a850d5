// Real programs started by a test: their output is read through pipes, and they are ended with the
// test. A servent among them is driven by velmora-cli or over its control socket.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace velmora::process {

class Program {
 public:
  // The first argument is the name of a built program, or the whole path of another.
  explicit Program(std::vector<std::string> arguments);
  ~Program();  // kills it if it still runs
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Reads standard output up to a line that holds the text; false when the program ended or nothing
  // came for ten seconds.
  bool wait_for_line(const std::string& text);
  bool wait_for_error_line(const std::string& text);  // the same on standard error
  // Waits for its end (thirty seconds at most, then it is killed) and returns its exit status; -1
  // when it did not end by itself.
  int wait();
  void signal(int number) const;

  [[nodiscard]] const std::string& output() const { return output_; }
  [[nodiscard]] const std::string& errors() const { return errors_; }
  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  // Takes what the pipes hold; false when both have ended or nothing came in time.
  bool read_more(int timeout_ms);
  bool wait_for(const std::string& text, const std::string& stream);

  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
  std::string output_;
  std::string errors_;
};

struct Outcome {
  int status;
  std::string output, errors;
};

// Runs a program to its end.
Outcome run(std::vector<std::string> arguments);

// A blocking TCP connection; every call gives up after a second.
class Line {
 public:
  explicit Line(std::uint16_t port, int receive_buffer = 0, const char* address = "127.0.0.1");
  ~Line();
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  [[nodiscard]] bool connected() const { return fd_ >= 0; }
  bool send(std::string_view bytes);  // false when it could not be sent whole
  std::string receive();              // what there is; "" when nothing came
  bool shake_hands();                 // as a neighbour of the servent there

 private:
  int fd_ = -1;
};

// A servent's control socket, read with a deadline.
class Control {
 public:
  explicit Control(const TemporaryFolder& profile);
  ~Control();
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  void say(const std::string& method, const std::string& params) const;  // in JSON
  std::string line(int timeout_ms);  // the next one, or "" when none came in time

 private:
  int fd_;
  std::string text_;
};

// Runs velmora-cli with these words for the servent of this profile.
Outcome ask(const TemporaryFolder& profile, std::vector<std::string> words);
// A velmorad that has said that it runs.
std::unique_ptr<Program> servent(const TemporaryFolder& profile, const std::string& address,
                                 const std::vector<std::string>& more = {});

// A velmorad with a profile of its own.
class Resident {
 public:
  explicit Resident(const std::string& address, const std::vector<std::string>& more = {})
      : program_(servent(profile_, address, more)) {}

  [[nodiscard]] Outcome ask(std::vector<std::string> words) const {
    return process::ask(profile_, std::move(words));
  }
  // Looks again whenever the control changes, for fifteen seconds.
  [[nodiscard]] bool wait_for(const std::string& control, const std::function<bool()>& holds) const;

 private:
  TemporaryFolder profile_;
  std::unique_ptr<Program> program_;
};

std::string content(const std::filesystem::path& path);

}  // namespace velmora::process
