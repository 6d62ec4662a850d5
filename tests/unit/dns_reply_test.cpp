// What a DNS server may send, the servers' texts, and the calendar that the scan counts with.
#include "platform/dns_reply.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/local_time.h"

namespace velmora {
namespace {

using namespace std::string_literals;

const std::string kAsked = "1.0.0.10.in-addr.arpa";
const std::string kPointer = "\xC0\x0C";  // to the question's name

std::string number(int value) {
  return {static_cast<char>(value / 256), static_cast<char>(value % 256)};
}

std::string encoded(const std::vector<std::string>& labels) {
  std::string bytes;
  for (const std::string& label : labels) bytes += static_cast<char>(label.size()) + label;
  return bytes + '\0';
}

std::string record(const std::string& owner, int type, const std::string& data, int of_class = 1) {
  return owner + number(type) + number(of_class) + "\0\0\0\x3C"s +
         number(static_cast<int>(data.size())) + data;
}

std::string reply(const std::vector<std::string>& records, int flags = 0x8180) {
  std::string bytes = number(0x1234) + number(flags) + number(1) +
                      number(static_cast<int>(records.size())) + number(0) + number(0) +
                      encoded({"1", "0", "0", "10", "in-addr", "arpa"}) + number(12) + number(1);
  for (const std::string& one : records) bytes += one;
  return bytes;
}

std::string ptr(const std::vector<std::string>& labels) {
  return record(kPointer, 12, encoded(labels));
}

TEST(DnsReply, OutcomesAreToldApart) {
  const std::string alias = record(kPointer, 5, encoded({"1", "Net", "example"}));
  const std::string aliased = record(encoded({"1", "NET", "example"}), 12, encoded({"host"}));
  const std::string longest(63, 'n');
  struct Case {
    const char* what;
    std::string bytes;
    int number;
    std::string name;
  };
  const std::vector<Case> cases = {
      {"a name", reply({ptr({"host", "example", "com"})}), kDnsName, "host.example.com"},
      {"the first of several", reply({ptr({"a"}), ptr({"b"})}), kDnsName, "a"},
      {"capitals differ",
       reply({record(encoded({"1", "0", "0", "10", "IN-addr", "ARPA"}), 12, encoded({"x"}))}),
       kDnsName, "x"},
      {"an alias", reply({alias, aliased}), kDnsName, "host"},
      {"an alias alone", reply({alias}), kDnsNoRecord, ""},
      {"another type in front", reply({record(kPointer, 1, "\x7F\0\0\1"s), ptr({"b"})}), kDnsName,
       "b"},
      {"wrong type only", reply({record(kPointer, 16, "\3abc")}), kDnsNoRecord, ""},
      {"wrong class", reply({record(kPointer, 12, encoded({"a"}), 3)}), kDnsNoRecord, ""},
      {"of another name", reply({record(encoded({"other"}), 12, encoded({"a"}))}), kDnsNoRecord,
       ""},
      {"hostile bytes", reply({ptr({"\x1B[31m\r\n\0<b>"s, "\xFF"})}), kDnsName,
       "\x1B[31m\r\n\0<b>.\xFF"s},
      {"255 bytes", reply({ptr({longest, longest, longest, std::string(61, 'n')})}), kDnsName,
       longest + "." + longest + "." + longest + "." + std::string(61, 'n')},
      {"256 bytes", reply({ptr({longest, longest, longest, std::string(62, 'n')})}), kDnsBadReply,
       ""},
      {"the root as a name", reply({ptr({})}), kDnsNoName, ""},
      {"no answer", reply({}), kDnsNoRecord, ""},
      {"no such name", reply({}, 0x8183), kDnsNoHost, ""},
      {"server failure", reply({}, 0x8182), kDnsServerFailed, ""},
      {"refused", reply({}, 0x8185), kDnsRefused, ""},
      {"not understood", reply({}, 0x8181), kDnsBadReply, ""},
      {"a question", reply({ptr({"a"})}, 0x0100), kDnsBadReply, ""},
      {"a pointer to itself", reply({record("\xC0\x27", 12, encoded({"a"}))}), kDnsBadReply, ""},
      {"a pointer behind the end", reply({record("\xFF\xFF", 12, encoded({"a"}))}), kDnsBadReply,
       ""},
      {"a label of no kind", reply({record(kPointer, 12, "\x80\0"s)}), kDnsBadReply, ""},
      {"more data than the name", reply({record(kPointer, 12, "\1a\0more"s)}), kDnsBadReply, ""},
      {"nothing", "", kDnsBadReply, ""},
  };
  for (const Case& given : cases) {
    const DnsAnswer answer = read_dns_reply(given.bytes, kAsked);
    EXPECT_EQ(answer.number, given.number) << given.what;
    EXPECT_EQ(answer.name, given.name) << given.what;
    EXPECT_EQ(answer.description.empty(), given.number == kDnsName) << given.what;
  }
}

TEST(DnsReply, EveryCutAndEveryWrongByteIsHarmless) {
  const std::string whole = reply({record(kPointer, 5, encoded({"n", "example"})),
                                   record(encoded({"n", "example"}), 12, "\4host" + kPointer)});
  ASSERT_EQ(read_dns_reply(whole, kAsked).name, "host." + kAsked);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NE(read_dns_reply(whole.substr(0, size), kAsked).outcome(), DnsOutcome::name) << size;
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(value);
      EXPECT_LE(read_dns_reply(bytes, kAsked).name.size(), 253U);
    }
  }
}

TEST(DnsReply, ReversesAnAddress) {
  EXPECT_EQ(dns_reverse_name("192.168.1.20"), "20.1.168.192.in-addr.arpa");
}

TEST(DnsServer, IsAnAddressWithOrWithoutAPort) {
  const auto read = [](std::string_view text) {
    const auto server = read_dns_server(text);
    return server ? server->address + " " + std::to_string(server->port) : "";
  };
  EXPECT_EQ(read("10.0.0.53"), "10.0.0.53 53");
  EXPECT_EQ(read("127.0.0.9:5353"), "127.0.0.9 5353");
  for (const char* text : {"", " ", "dns", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2..4", "-1.2.3.4",
                           "1.2.3.4:", "1.2.3.4:0", "1.2.3.4:65536", "1.2.3.4:-5", "1.2.3.4:5x",
                           "1.2.3.4 ", "::1", "1.2.3.4,5.6.7.8", "1.2.3.4:1:2"}) {
    EXPECT_EQ(read(text), "") << text;
  }
}

TEST(LocalTime, DaysBeforeAndOrder) {
  EXPECT_EQ(days_before({2000, 3, 5, 14, 5, 9}, 10), (LocalTime{2000, 2, 24, 14, 5, 9}));
  EXPECT_EQ(days_before({2001, 1, 1, 0, 0, 0}, 1), (LocalTime{2000, 12, 31, 0, 0, 0}));
  EXPECT_LT((LocalTime{2000, 2, 24, 14, 5, 8}), (LocalTime{2000, 2, 24, 14, 5, 9}));
  EXPECT_LT((LocalTime{1999, 12, 31, 23, 59, 59}), (LocalTime{2000, 1, 1, 0, 0, 0}));
}

}  // namespace
}  // namespace velmora
