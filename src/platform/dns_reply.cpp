#include "platform/dns_reply.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace velmora {
namespace {

constexpr std::size_t kMostNameBytes = 255;  // as it is encoded, the last zero included
constexpr int kMostRecords = 256;

constexpr int kTypeCname = 5;
constexpr int kTypePtr = 12;
constexpr int kClassInternet = 1;

struct ReplyCut {};  // the reply is shorter than it says, or a name in it is none

// Walks through a reply; what lies outside raises ReplyCut.
class ReplyReader {
 public:
  explicit ReplyReader(std::string_view reply) : reply_(reply) {}

  [[nodiscard]] std::size_t at() const { return at_; }
  void go_to(std::size_t at) { at_ = at; }

  int byte() {
    if (at_ >= reply_.size()) throw ReplyCut();
    return static_cast<unsigned char>(reply_[at_++]);
  }
  int number() {
    const int high = byte();
    return high * 256 + byte();
  }
  void skip(std::size_t count) {
    if (reply_.size() - at_ < count) throw ReplyCut();
    at_ += count;
  }

  // The labels joined by dots; the root is the empty text.
  std::string name() {
    std::string name;
    std::size_t encoded = 1;
    std::optional<std::size_t> behind;  // where the reading goes on after the first pointer
    std::size_t start = at_;
    for (int length = byte(); length != 0; length = byte()) {
      if (length >= 0xC0) {
        const std::size_t target =
            static_cast<std::size_t>(length & 0x3F) * 256 + static_cast<std::size_t>(byte());
        // Only backwards, so that a chain of pointers ends.
        if (target >= start) throw ReplyCut();
        if (!behind) behind = at_;
        at_ = start = target;
        continue;
      }
      const auto count = static_cast<std::size_t>(length);
      encoded += count + 1;
      if (length > 63 || encoded > kMostNameBytes) throw ReplyCut();
      const std::size_t label = at_;
      skip(count);
      if (!name.empty()) name += '.';
      name += reply_.substr(label, count);
    }
    if (behind) at_ = *behind;
    return name;
  }

 private:
  std::string_view reply_;
  std::size_t at_ = 0;
};

bool same_name(std::string_view one, std::string_view other) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : int{c}; };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

int failure_of(int response_code) {
  constexpr int kFormatError = 1;
  constexpr int kNoSuchName = 3;
  constexpr int kRefusedCode = 5;
  switch (response_code) {
    case kFormatError:
      return kDnsBadReply;
    case kNoSuchName:
      return kDnsNoHost;
    case kRefusedCode:
      return kDnsRefused;
    default:
      return kDnsServerFailed;
  }
}

DnsAnswer read_records(ReplyReader& reader, int records, std::string wanted) {
  for (int record = 0; record < std::min(records, kMostRecords); ++record) {
    const std::string owner = reader.name();
    const int type = reader.number();
    const int of_class = reader.number();
    reader.skip(4);  // time to live
    const auto length = static_cast<std::size_t>(reader.number());
    const std::size_t data = reader.at();
    reader.skip(length);
    const std::size_t next = reader.at();
    if (of_class != kClassInternet || !same_name(owner, wanted)) continue;
    if (type != kTypePtr && type != kTypeCname) continue;
    reader.go_to(data);
    std::string name = reader.name();
    if (reader.at() != next) throw ReplyCut();
    if (type == kTypeCname) {
      wanted = std::move(name);
    } else {
      return name.empty() ? dns_failure(kDnsNoName) : DnsAnswer{kDnsName, std::move(name), {}};
    }
  }
  return dns_failure(kDnsNoRecord);
}

}  // namespace

std::string dns_reverse_name(const std::string& address) {
  std::string reversed;
  std::string_view rest = address;
  while (!rest.empty()) {
    const std::size_t dot = rest.rfind('.');
    reversed += dot == std::string_view::npos ? rest : rest.substr(dot + 1);
    reversed += '.';
    rest = rest.substr(0, dot == std::string_view::npos ? 0 : dot);
  }
  return reversed + "in-addr.arpa";
}

DnsAnswer read_dns_reply(std::string_view reply, std::string_view reverse_name) {
  try {
    ReplyReader reader(reply);
    reader.skip(2);  // the identifier
    const int flags = reader.number();
    const int questions = reader.number();
    const int records = reader.number();
    constexpr int kIsReply = 0x8000;
    constexpr int kCodeBits = 0xF;
    if ((flags & kIsReply) == 0) return dns_failure(kDnsBadReply);
    if ((flags & kCodeBits) != 0) return dns_failure(failure_of(flags & kCodeBits));
    if (questions != 1) return dns_failure(kDnsBadReply);
    reader.skip(4);  // the counts of the sections behind the answer
    reader.name();
    reader.skip(4);  // type and class asked for
    return read_records(reader, records, std::string(reverse_name));
  } catch (const ReplyCut&) {
    return dns_failure(kDnsBadReply);
  }
}

}  // namespace velmora
