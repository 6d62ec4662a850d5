#include "protocol/conversions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/descriptor_header.h"
#include "support/doubles.h"

namespace velmora {
namespace {

using Texts = std::vector<std::string>;

TEST(Conversions, DwordToBytes) {
  for (const auto& [value, expected] : {std::pair{0.0, bytes({0, 0, 0, 0})},
                                        {14.0, bytes({14, 0, 0, 0})},
                                        {255.0, bytes({255, 0, 0, 0})},
                                        {32000.0, bytes({0, 125, 0, 0})},
                                        {16777215.0, bytes({255, 255, 255, 0})},
                                        // single precision: not every number beyond 2^24
                                        {16777217.0, bytes({0, 0, 0, 1})},
                                        {2147483520.0, bytes({128, 255, 255, 127})},
                                        {-1.0, bytes({255, 255, 255, 255})},
                                        {-2.0, bytes({254, 255, 255, 255})},
                                        {-2147483648.0, bytes({0, 0, 0, 128})},
                                        // half to even, at every byte
                                        {0.5, bytes({0, 0, 0, 0})},
                                        {1.5, bytes({2, 0, 0, 0})},
                                        {2.5, bytes({2, 0, 0, 0})},
                                        {255.5, bytes({0, 1, 0, 0})},
                                        {384.0, bytes({128, 1, 0, 0})}}) {
    EXPECT_EQ(Dword_to_Str(value), expected) << value;
  }
  // The first rounds up to 2^31 in single precision.
  for (const double value : {2147483647.0, 2147483648.0, 4294967295.0, -2147483904.0, 1e300}) {
    EXPECT_EQ(error_of([=] { Dword_to_Str(value); }), "Overflow") << value;
  }
}

TEST(Conversions, BytesToDword) {
  Lines log;
  EXPECT_EQ(Str_to_Dword(bytes({14, 0, 0, 0}), log), 14);
  EXPECT_EQ(Str_to_Dword(bytes({255, 255, 255, 255}), log), 4294967295.0);
  EXPECT_EQ(Str_to_Dword(bytes({1, 2, 3, 4, 99}), log), 67305985);
  EXPECT_TRUE(log.lines.empty());
  for (std::size_t length = 0; length < 4; ++length) {
    log.lines.clear();
    EXPECT_EQ(Str_to_Dword(std::string(length, '\1'), log), 0);
    EXPECT_EQ(log.lines, Texts{"Str_to_Dword: Invalid procedure call or argument"});
  }
}

TEST(Conversions, Words) {
  for (const auto& [value, expected] : {std::pair{6346, bytes({0xCA, 0x18})},
                                        {0, bytes({0, 0})},
                                        {255, bytes({255, 0})},
                                        {32767, bytes({255, 127})},
                                        {-1, bytes({255, 255})},
                                        {-32768, bytes({0, 128})},
                                        {-255, bytes({1, 255})}}) {
    EXPECT_EQ(Word_to_Str(static_cast<std::int16_t>(value)), expected) << value;
    const auto decode = [&wire = expected] { return Str_to_Word(wire); };
    if (value >= 0) {
      EXPECT_EQ(decode(), value);
    } else {
      EXPECT_EQ(error_of(decode), "Overflow") << value;
    }
  }
  EXPECT_EQ(error_of([] { Str_to_Word("a"); }), "Invalid procedure call or argument");
  EXPECT_EQ(error_of([] { Str_to_Word(""); }), "Invalid procedure call or argument");
}

TEST(Conversions, DottedAddresses) {
  Lines log;
  for (const auto& [text, expected] : {std::pair{"10.0.0.1", bytes({10, 0, 0, 1})},
                                       {"255.255.255.255", bytes({255, 255, 255, 255})},
                                       {"1..2.3", bytes({1, 0, 2, 3})},
                                       {"a.b.c.d", bytes({0, 0, 0, 0})},
                                       {"1.2.3.4 (me)", bytes({1, 2, 3, 4})}}) {
    EXPECT_EQ(IPdots_to_DwordStr(text, log), expected) << text;
  }
  EXPECT_TRUE(log.lines.empty());
  for (const auto& [text, error] : {std::pair{"", "Invalid procedure call or argument"},
                                    {"1.2.3", "Invalid procedure call or argument"},
                                    {"1.2.256.4", "Overflow"},
                                    {"1.2.3.-4", "Overflow"},
                                    {"1.2.3.1e999", "Overflow"}}) {
    log.lines.clear();
    EXPECT_EQ(IPdots_to_DwordStr(text, log), "-1") << text;
    EXPECT_EQ(log.lines, Texts{std::string("Error: IPdots_to_DwordStr: ") + error}) << text;
  }
  EXPECT_EQ(dotted_address(bytes({10, 0, 0, 255, 9})), "10.0.0.255");
  EXPECT_EQ(error_of([] { dotted_address("abc"); }), "Invalid procedure call or argument");
}

TEST(Conversions, TypedHosts) {
  struct Case {
    const char* text;
    const char* message;
    const char* address;
    int port;
  };
  for (const Case& c : {Case{"1.2.3.4", "", "1.2.3.4", 6346},
                        {"1.2.3.4:99", "", "1.2.3.4", 99},
                        {"1.2.3.4:", "", "1.2.3.4", 0},
                        {"1.2.3.4:5:6", "", "1.2.3.4", 5},
                        {"1.2.3.4:65535", "", "1.2.3.4", -1},
                        {"1.2.3.4:1e999", "", "1.2.3.4", 0},
                        {"1..2.3", "", "1..2.3", 6346},
                        {"255.255.255.255", "", "255.255.255.255", 6346}}) {
    const CheckedHost host = Check_IP(c.text);
    EXPECT_EQ(host.message, c.message) << c.text;
    EXPECT_EQ(host.address, c.address) << c.text;
    EXPECT_EQ(host.port, c.port) << c.text;
  }
  for (const char* text : {"", "1.2.3", "abc", "1.2.3:4.5", ":::"}) {
    EXPECT_EQ(Check_IP(text).message, "Not a valid IP!, need 3 dots") << text;
  }
  for (const char* text :
       {"1.2.3.256:99", "256.1.1.1", "1.256.1.1", "1.1.256.1", "256.1", "1.1.1.1e999"}) {
    EXPECT_EQ(Check_IP(text).message, "Not a valid IP!, > 255") << text;
  }
}

TEST(Conversions, IdentifiersAreMadeOfHourAndSecond) {
  const auto guid = [](int hour, int minute, int second) {
    return GetGUID({.hour = hour, .minute = minute, .second = second});
  };
  EXPECT_EQ(guid(13, 5, 7), "1371234567890123");
  EXPECT_EQ(guid(13, 59, 7), guid(13, 5, 7));
  EXPECT_EQ(guid(1, 0, 37), "1371234567890123");
  EXPECT_EQ(guid(0, 0, 0), "0012345678901234");
  EXPECT_EQ(guid(23, 59, 59), "2359123456789012");
  EXPECT_EQ(guid_text(bytes({0, 10, 255})), "00-0A-FF");
  EXPECT_EQ(guid_text(""), "");
}

TEST(DescriptorHeader, GoesOutAndComesBack) {
  Lines log;
  DescriptorHeader header;
  header.guid = "0123456789abcdef";
  header.function = kQueryHit;
  header.ttl = 7;
  header.hops = 255;
  for (const float length : {0.0F, 1.0F, 257.0F, 32000.0F}) {
    header.payload_length = length;
    const std::string wire = header_to_str(header, log);
    ASSERT_EQ(wire.size(), kHeaderSize);
    const DescriptorHeader back = str_to_header(wire + "more");
    EXPECT_EQ(back.guid, header.guid);
    EXPECT_EQ(back.function, kQueryHit);
    EXPECT_EQ(back.ttl, 7);
    EXPECT_EQ(back.hops, 255);
    EXPECT_EQ(back.payload_length, length);
  }
  header.payload_length = 32001;
  EXPECT_EQ(str_to_header(header_to_str(header, log)).payload_length, -1);
  const std::string largest = header_to_str(header, log).substr(0, 19) + "\xFF\xFF\xFF\xFF";
  EXPECT_EQ(str_to_header(largest).payload_length, -1);
  EXPECT_TRUE(log.lines.empty());
}

TEST(DescriptorHeader, TheGuidHasAFixedWidth) {
  Lines log;
  for (const auto& [guid, wire] : {std::pair{"abc", "abc             "},
                                   {"", "                "},
                                   {"0123456789abcdefgh", "0123456789abcdef"}}) {
    DescriptorHeader header;
    header.guid = guid;
    EXPECT_EQ(header_to_str(header, log), wire + std::string(7, '\0')) << guid;
  }
  EXPECT_TRUE(log.lines.empty());
  EXPECT_ANY_THROW(str_to_header(std::string(22, 'x')));
}

}  // namespace
}  // namespace velmora
