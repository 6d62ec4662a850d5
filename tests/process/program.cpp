#include "process/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace velmora::process {

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "velmora-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Program::Program(std::vector<std::string> arguments) {
  arguments[0] = std::filesystem::path(VELMORA_BIN) / arguments[0];
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  std::array<int, 2> out{};
  std::array<int, 2> err{};
  if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  pid_ = fork();
  if (pid_ == 0) {
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(out[1]);
  close(err[1]);
  out_ = out[0];
  err_ = err[0];
}

Program::~Program() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  for (const int fd : {out_, err_}) {
    if (fd >= 0) close(fd);
  }
}

bool Program::read_more(int timeout_ms) {
  std::array<pollfd, 2> polled = {{{out_, POLLIN, 0}, {err_, POLLIN, 0}}};
  if (poll(polled.data(), polled.size(), timeout_ms) <= 0) return false;
  const auto take = [](const pollfd& ready, int& fd, std::string& text) {
    if (ready.revents == 0) return;
    std::array<char, 4096> buffer{};
    const ssize_t count = read(fd, buffer.data(), buffer.size());
    if (count > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
    } else {
      close(fd);
      fd = -1;  // poll passes it over from now on
    }
  };
  take(polled[0], out_, output_);
  take(polled[1], err_, errors_);
  return out_ >= 0 || err_ >= 0;
}

bool Program::wait_for_line(const std::string& text) { return wait_for(text, output_); }

bool Program::wait_for_error_line(const std::string& text) { return wait_for(text, errors_); }

bool Program::wait_for(const std::string& text, const std::string& stream) {
  const auto found = [&] {
    const auto at = stream.find(text);
    return at != std::string::npos && stream.find('\n', at) != std::string::npos;
  };
  while (!found()) {
    if (!read_more(10'000)) return found();
  }
  return true;
}

int Program::wait() {
  while (read_more(30'000)) {
  }
  if (out_ >= 0 || err_ >= 0) kill(pid_, SIGKILL);
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Program::signal(int number) const { kill(pid_, number); }

}  // namespace velmora::process
