// A real program started by a test: its output is read through pipes, and it is ended with the
// test.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace velmora::process {

// A folder of its own, gone with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

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

}  // namespace velmora::process
