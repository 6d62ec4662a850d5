#include "process/program.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace velmora::process {

using Clock = std::chrono::steady_clock;

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

Outcome run(std::vector<std::string> arguments) {
  Program program(std::move(arguments));
  const int status = program.wait();
  return {status, program.output(), program.errors()};
}

Outcome ask(const TemporaryFolder& profile, std::vector<std::string> words) {
  words.insert(words.begin(), {"velmora-cli", "--profile", profile.path()});
  return run(std::move(words));
}

std::unique_ptr<Program> servent(const TemporaryFolder& profile, const std::string& address,
                                 const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {"velmorad", "--profile", profile.path(), "--listen",
                                        address};
  arguments.insert(arguments.end(), more.begin(), more.end());
  auto program = std::make_unique<Program>(arguments);
  EXPECT_TRUE(program->wait_for_line("runs on profile")) << program->errors();
  return program;
}

Line::Line(std::uint16_t port, int receive_buffer, const char* address)
    : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const timeval second{1, 0};
  setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &second, sizeof second);
  setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &second, sizeof second);
  if (receive_buffer > 0) {
    setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &receive_buffer, sizeof receive_buffer);
  }
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_port = htons(port);
  inet_pton(AF_INET, address, &place.sin_addr);
  if (connect(fd_, reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0) {
    close(fd_);
    fd_ = -1;
  }
}

Line::~Line() {
  if (fd_ >= 0) close(fd_);
}

bool Line::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

std::string Line::receive() {
  std::array<char, 65536> buffer{};
  const ssize_t count = recv(fd_, buffer.data(), buffer.size(), 0);
  return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

bool Line::shake_hands() {
  return connected() && send("GNUTELLA CONNECT/0.4\n\n") && receive() == "GNUTELLA OK\n\n";
}

Control::Control(const TemporaryFolder& profile)
    : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  profile.path("control.sock").copy(address.sun_path, sizeof address.sun_path - 1);
  if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("no control socket");
  }
}

Control::~Control() { close(fd_); }

void Control::say(const std::string& method, const std::string& params) const {
  const std::string line =
      R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}\n";
  static_cast<void>(::send(fd_, line.data(), line.size(), MSG_NOSIGNAL));
}

std::string Control::line(int timeout_ms) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
  std::size_t end = 0;
  while ((end = text_.find('\n')) == std::string::npos) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd ready{fd_, POLLIN, 0};
    if (left.count() < 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) return {};
    std::array<char, 65536> buffer{};
    const ssize_t count = read(fd_, buffer.data(), buffer.size());
    if (count <= 0) return {};
    text_.append(buffer.data(), static_cast<std::size_t>(count));
  }
  std::string line = text_.substr(0, end);
  text_.erase(0, end + 1);
  return line;
}

bool Resident::wait_for(const std::string& control, const std::function<bool()>& holds) const {
  const auto deadline = Clock::now() + std::chrono::seconds(15);
  while (!holds()) {
    if (Clock::now() > deadline) return false;
    static_cast<void>(ask({"subscribe", control, "--count", "1", "--for", "0.2"}));
  }
  return true;
}

std::string content(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace velmora::process
