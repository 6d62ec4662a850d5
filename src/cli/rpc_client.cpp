#include "cli/rpc_client.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

namespace velmora::cli {
namespace {

constexpr std::size_t kMaxSent = std::size_t{16} << 20;      // the servent reads no longer line
constexpr std::size_t kMaxReceived = std::size_t{64} << 20;  // nor keeps more unsent
constexpr std::size_t kMaxNotices = 65536;

std::string error_text(int error) { return std::strerror(error); }

int milliseconds_until(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX));
}

}  // namespace

RpcClient::RpcClient(std::string profile, std::chrono::milliseconds answer_time)
    : profile_(std::move(profile)), answer_time_(answer_time) {
  try {
    connect();
  } catch (...) {
    if (socket_ >= 0) close(socket_);
    throw;
  }
}

RpcClient::~RpcClient() { close(socket_); }

void RpcClient::connect() {
  const std::string path = profile_ + "/control.sock";
  const auto fail = [&](int error) {
    throw Failure(fmt::format("no servent is running on profile {} (cannot connect to {}: {})",
                              profile_, path, error_text(error)));
  };
  socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (socket_ < 0) fail(errno);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::string name = path;
  int folder = -1;
  if (name.size() >= sizeof address.sun_path) {
    // a socket's name is short: a longer path is reached through its open folder
    folder = open(profile_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) fail(errno);
    name = fmt::format("/proc/self/fd/{}/control.sock", folder);
  }
  std::copy(name.begin(), name.end(), std::begin(address.sun_path));
  int result = 0;
  do {
    result = ::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  } while (result < 0 && errno == EINTR);
  const int error = errno;
  if (folder >= 0) close(folder);
  if (result < 0) fail(error);
  if (fcntl(socket_, F_SETFL, O_NONBLOCK) < 0) fail(errno);
}

nlohmann::json RpcClient::call(std::string_view method, nlohmann::json params) {
  const std::int64_t id = ++last_id_;
  answer_.reset();
  send_line(nlohmann::json{
      {"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", std::move(params)}}
                .dump());
  const auto deadline = Clock::now() + answer_time_;
  // an error about a message that the servent could not read carries no id
  const auto is_ours = [&] {
    const nlohmann::json theirs = answer_->value("id", nlohmann::json());
    return theirs == id || (theirs.is_null() && answer_->contains("error"));
  };
  while (!answer_ || !is_ours()) {
    answer_.reset();
    require_open();
    if (wait(POLLIN, deadline, -1) == Ready::timeout) {
      throw Failure(fmt::format("the servent did not answer \"{}\" within {:g} s", method,
                                std::chrono::duration<double>(answer_time_).count()));
    }
    receive();
  }
  const nlohmann::json answer = std::move(*answer_);
  answer_.reset();
  if (const auto error = answer.find("error"); error != answer.end()) {
    const auto message = error->is_object() ? error->find("message") : error->end();
    throw RpcError(error->is_object() && message != error->end() && message->is_string()
                       ? message->get<std::string>()
                       : error->dump());
  }
  const auto result = answer.find("result");
  if (result == answer.end()) throw Failure("the servent gave an answer without a result");
  return *result;
}

std::optional<std::string> RpcClient::notice(Clock::time_point deadline, int input) {
  while (notices_.empty()) {
    require_open();
    if (wait(POLLIN, deadline, input) != Ready::socket) return std::nullopt;
    receive();
  }
  std::string control = std::move(notices_.front());
  notices_.pop_front();
  return control;
}

bool RpcClient::closed_by(Clock::time_point deadline) {
  while (!closed_ && wait(POLLIN, deadline, -1) != Ready::timeout) receive();
  return closed_;
}

void RpcClient::send_line(const std::string& line) {
  if (line.size() >= kMaxSent) throw Failure("the text is too long for the servent");
  const std::string bytes = line + "\n";
  const auto deadline = Clock::now() + answer_time_;
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t count = send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count >= 0) {
      sent += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {
      if (wait(POLLOUT, deadline, -1) == Ready::timeout) {
        throw Failure("the servent does not read its control socket");
      }
    } else if (errno == EPIPE || errno == ECONNRESET) {
      closed_ = true;
      require_open();
    } else if (errno != EINTR) {
      throw Failure("cannot write to the control socket: " + error_text(errno));
    }
  }
}

RpcClient::Ready RpcClient::wait(short events, Clock::time_point deadline, int input) {
  std::array<pollfd, 3> watched = {pollfd{socket_, events, 0}, pollfd{interrupt_, POLLIN, 0},
                                   pollfd{input, POLLIN, 0}};
  while (true) {
    const int count = poll(watched.data(), watched.size(), milliseconds_until(deadline));
    if (count < 0 && errno != EINTR) throw Failure("cannot wait: " + error_text(errno));
    if (count < 0) continue;
    if (watched[1].revents != 0) throw Interrupted();
    if (watched[0].revents != 0) return Ready::socket;
    if (watched[2].revents != 0) return Ready::input;
    if (Clock::now() >= deadline) return Ready::timeout;
  }
}

void RpcClient::receive() {
  std::array<char, std::size_t{64} << 10> block;
  const ssize_t count = recv(socket_, block.data(), block.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) {
    closed_ = true;
    return;
  }
  const std::size_t searched = received_.size();
  received_.append(block.data(), static_cast<std::size_t>(count));
  std::size_t begin = 0;
  for (std::size_t end = received_.find('\n', searched); end != std::string::npos;
       end = received_.find('\n', begin)) {
    take_line(std::string_view(received_).substr(begin, end - begin));
    begin = end + 1;
  }
  received_.erase(0, begin);
  if (received_.size() > kMaxReceived) throw Failure("the servent sent a line without an end");
}

void RpcClient::take_line(std::string_view line) {
  nlohmann::json message = nlohmann::json::parse(line, nullptr, false);
  if (!message.is_object()) throw Failure("the servent sent a line that is no JSON-RPC message");
  if (message.contains("id")) {
    answer_ = std::move(message);
    return;
  }
  const auto params = message.find("params");
  if (params == message.end() || !params->is_object()) return;
  const auto control = params->find("control");
  if (control == params->end() || !control->is_string()) return;
  if (notices_.size() < kMaxNotices) notices_.push_back(control->get<std::string>());
}

void RpcClient::require_open() const {
  if (closed_) throw Failure("the servent has closed the control socket");
}

}  // namespace velmora::cli
