// The program's end of the control socket: JSON-RPC 2.0, one message a line, over the Unix socket
// `control.sock` of a profile folder. Blocking, but every wait has an end. Notices that arrive
// while an answer is awaited are kept, up to a bound. Failures are worded for a person.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "cli/failure.h"

namespace velmora::cli {

using Clock = std::chrono::steady_clock;

// The servent answered with an error; what() is its message.
class RpcError : public Failure {
 public:
  using Failure::Failure;
};

class RpcClient {
 public:
  // Connects. `answer_time`: how long one answer may take.
  RpcClient(std::string profile, std::chrono::milliseconds answer_time);
  ~RpcClient();
  RpcClient(const RpcClient&) = delete;
  RpcClient& operator=(const RpcClient&) = delete;

  // Every wait from now on ends with Interrupted when this descriptor is readable.
  void end_when_readable(int descriptor) { interrupt_ = descriptor; }

  // The result of a method.
  nlohmann::json call(std::string_view method, nlohmann::json params = nlohmann::json::object());
  // The control that the next notice names; none when the deadline has passed, or when `input`
  // (a descriptor, -1 for none) can be read.
  std::optional<std::string> notice(Clock::time_point deadline, int input = -1);
  // Whether the servent has closed the connection by then.
  bool closed_by(Clock::time_point deadline);

 private:
  enum class Ready { socket, input, timeout };

  void connect();
  void send_line(const std::string& line);
  Ready wait(short events, Clock::time_point deadline, int input);
  void receive();
  void take_line(std::string_view line);
  void require_open() const;

  std::string profile_;
  std::chrono::milliseconds answer_time_;
  int socket_ = -1;
  int interrupt_ = -1;
  bool closed_ = false;
  std::int64_t last_id_ = 0;
  std::string received_;
  std::optional<nlohmann::json> answer_;
  std::deque<std::string> notices_;
};

}  // namespace velmora::cli
