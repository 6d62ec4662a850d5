#include "load/frames.h"

#include <charconv>
#include <cstring>

#include "load/descriptors.h"

namespace velmora::bench {
namespace {

class DescriptorFrames : public Frames {
 public:
  explicit DescriptorFrames(bool answers_pings) : answers_pings_(answers_pings) {}

  [[nodiscard]] std::string hello() const override { return "GNUTELLA CONNECT/0.4\n\n"; }
  [[nodiscard]] bool welcomed(std::string_view received) const override {
    return received == "GNUTELLA OK\n\n";
  }
  void append(std::string& out, std::string_view descriptor) const override { out += descriptor; }
  [[nodiscard]] std::size_t copy_bytes(std::size_t descriptor) const override { return descriptor; }
  [[nodiscard]] bool answers_pings() const override { return answers_pings_; }

  [[nodiscard]] Received read(std::string_view bytes) const override {
    Received got;
    while (bytes.size() - got.used >= kHeaderBytes) {
      const char* descriptor = bytes.data() + got.used;
      const std::size_t size = descriptor_bytes(descriptor);
      if (bytes.size() - got.used < size) break;
      got.used += size;
      if (static_cast<unsigned char>(descriptor[16]) == kPongCode) {
        ++got.pongs;
      } else {
        ++got.copies;
        got.identifier_sum += identifier_sum(descriptor);
      }
    }
    got.copy_bytes = got.used;
    return got;
  }

 private:
  bool answers_pings_;
};

class NatsFrames : public Frames {
 public:
  [[nodiscard]] std::string hello() const override {
    return "CONNECT {\"verbose\":false,\"echo\":false,\"protocol\":1}\r\nSUB t 1\r\nPING\r\n";
  }
  [[nodiscard]] bool welcomed(std::string_view received) const override {
    return received.find("PONG\r\n") != std::string_view::npos;
  }
  void append(std::string& out, std::string_view descriptor) const override {
    out += "PUB t ";
    out += std::to_string(descriptor.size());
    out += "\r\n";
    out += descriptor;
    out += "\r\n";
  }
  [[nodiscard]] std::size_t copy_bytes(std::size_t descriptor) const override {
    return std::string_view("MSG t 1 ").size() + std::to_string(descriptor).size() + descriptor + 4;
  }
  [[nodiscard]] bool only_copies() const override { return false; }

  [[nodiscard]] Received read(std::string_view bytes) const override {
    Received got;
    while (got.used < bytes.size()) {
      const std::string_view rest = bytes.substr(got.used);
      const auto* end = static_cast<const char*>(std::memchr(rest.data(), '\n', rest.size()));
      if (end == nullptr) break;
      const auto line = static_cast<std::size_t>(end - rest.data()) + 1;
      if (!rest.starts_with("MSG t 1 ")) {
        got.wants_pong = got.wants_pong || rest.starts_with("PING");
        got.used += line;
        continue;
      }
      std::size_t size = 0;
      std::from_chars(rest.data() + 8, end, size);
      if (rest.size() < line + size + 2) break;
      got.identifier_sum += identifier_sum(rest.data() + line);
      got.used += line + size + 2;
      got.copy_bytes += line + size + 2;
      ++got.copies;
    }
    return got;
  }
};

// Version 5 of MQTT, for its subscription without own messages; quality of service 0. Every packet
// is shorter than 128 bytes, so that its length is one byte.
class MqttFrames : public Frames {
 public:
  [[nodiscard]] std::string hello() const override {
    using namespace std::string_literals;
    const std::string connect = "\0\4MQTT\5\2\0\0\0"s + "\0\0"s;  // no keep-alive, no client name
    const std::string subscribe = "\0\1\0\0\1t\4"s;
    return packet('\x10', connect) + packet('\x82', subscribe);
  }
  [[nodiscard]] bool welcomed(std::string_view received) const override {
    std::size_t at = 0;
    while (at + 1 < received.size()) {
      if (received[at] == '\x90') return at + 2 + length(received, at) <= received.size();
      at += 2 + length(received, at);
    }
    return false;
  }
  void append(std::string& out, std::string_view descriptor) const override {
    out += '\x30';
    out += static_cast<char>(descriptor.size() + 4);
    out.append("\0\1t\0", 4);
    out += descriptor;
  }
  [[nodiscard]] std::size_t copy_bytes(std::size_t descriptor) const override {
    return descriptor + 6;
  }

  [[nodiscard]] Received read(std::string_view bytes) const override {
    Received got;
    while (bytes.size() - got.used >= 2) {
      const std::size_t size = 2 + length(bytes, got.used);
      if (bytes.size() - got.used < size) break;
      got.identifier_sum += identifier_sum(bytes.data() + got.used + 6);
      got.used += size;
      ++got.copies;
    }
    got.copy_bytes = got.used;
    return got;
  }

 private:
  static std::string packet(char type, const std::string& body) {
    return std::string(1, type) + static_cast<char>(body.size()) + body;
  }
  static std::size_t length(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at + 1]);
  }
};

}  // namespace

std::unique_ptr<Frames> make_frames(std::string_view name) {
  if (name == "velmora") return std::make_unique<DescriptorFrames>(true);
  if (name == "bare") return std::make_unique<DescriptorFrames>(false);
  if (name == "nats") return std::make_unique<NatsFrames>();
  if (name == "mqtt") return std::make_unique<MqttFrames>();
  return nullptr;
}

}  // namespace velmora::bench
