#include "platform/number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <string>

#include "platform/field_number.h"
#include "support/doubles.h"

namespace velmora {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNan = std::nan("");

TEST(Number, WholeNumbersRoundHalfToEvenAndOverflowAtTheirWidth) {
  for (const auto& [value, whole] :
       {std::pair{0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {-1.5, -2}, {-2.5, -2}, {2.51, 3}}) {
    EXPECT_EQ(to_int16(value), whole) << value;
    EXPECT_EQ(to_int32(value), whole) << value;
  }
  EXPECT_EQ(to_byte(255.5 - 0.01), 255);
  EXPECT_EQ(to_byte(-0.5), 0);
  EXPECT_EQ(to_int16(32767.4), 32767);
  EXPECT_EQ(to_int16(-32768.5), -32768);
  EXPECT_EQ(to_int32(2147483647.4), 2147483647);
  EXPECT_EQ(to_int32(-2147483648.5), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(to_single(std::numeric_limits<float>::max()), std::numeric_limits<float>::max());

  const auto byte = [](double value) { return error_of([=] { to_byte(value); }); };
  const auto int16 = [](double value) { return error_of([=] { to_int16(value); }); };
  const auto int32 = [](double value) { return error_of([=] { to_int32(value); }); };
  const auto single = [](double value) { return error_of([=] { to_single(value); }); };
  for (const double value : {255.5, -0.51, kNan}) EXPECT_EQ(byte(value), "Overflow") << value;
  for (const double value : {32767.5, -32768.51, kNan}) EXPECT_EQ(int16(value), "Overflow");
  for (const double value : {2147483647.5, -2147483649.0, 1e300, kNan}) {
    EXPECT_EQ(int32(value), "Overflow") << value;
  }
  for (const double value : {3.5e38, -3.5e38, kInfinity, kNan}) {
    EXPECT_EQ(single(value), "Overflow") << value;
  }
}

TEST(Number, PortsWrapAndNeverOverflow) {
  struct Case {
    double value;
    int port;
    unsigned shown;
  };
  for (const Case& c : {Case{6346, 6346, 6346},
                        {32767, 32767, 32767},
                        {32768, -32768, 32768},
                        {65535, -1, 65535},
                        {65536, 0, 0},
                        {-1, -1, 65535},
                        {65536 + 80, 80, 80},
                        {0.5, 0, 0},
                        {1e300, 0, 0},
                        {kInfinity, 0, 0},
                        {kNan, 0, 0}}) {
    EXPECT_EQ(to_port(c.value), c.port) << c.value;
    EXPECT_EQ(unsigned_port(to_port(c.value)), c.shown) << c.value;
  }
}

TEST(Number, LenientReadingTakesTheLongestNumberAtTheStart) {
  for (const char* text : {"", "abc", "--5", "+-5", "-+5", ".", "e5", "0x10", "&H10", "inf", "nan",
                           "infinity", "1e-999", "-1e-999", "0.0000001e-320",
                           "1e-99999999999999999999", "0e99999999999999999999"}) {
    EXPECT_EQ(val(text), 0) << text;
  }
  const std::string many(100000, ' ');
  const std::pair<std::string, double> cases[] = {
      {"12abc", 12},
      {" 1 2\t3\n4", 1234},
      {"-5", -5},
      {"+5", 5},
      {"- 5", -5},
      {"5-3", 5},
      {"1.5.9", 1.5},
      {".5", 0.5},
      {"5.", 5},
      {"1e3", 1000},
      {"1D3", 1000},
      {"1d-3x", 0.001},
      {"1e", 1},
      {"1e+", 1},
      {"1e5e6", 1e5},
      {"1 e 3", 1000},
      {"1,000", 1},
      {"12\r3", 12},
      {"007", 7},
      {std::string("1\0002", 3), 1},
      {"4294967295", 4294967295.0},
      {many + "7" + many + "8", 78},
      {std::string(200000, '0') + "9", 9},
      {"0." + std::string(400, '0') + "1e401", 1},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(val(text), value) << text.substr(0, 40);
  for (const std::string& text :
       {std::string("1e309"), std::string("-1e309"), std::string("1e99999999999999999999"),
        std::string(310, '9'), "0." + std::string(9, '0') + "1e330"}) {
    EXPECT_EQ(error_of([&] { val(text); }), "Overflow") << text.substr(0, 40);
    EXPECT_EQ(error_of([&] { number(text); }), "Overflow") << text.substr(0, 40);
  }
}

TEST(Number, StrictReadingRefusesWhatIsNoNumber) {
  for (const auto& [text, value] : {std::pair{"7", 7.0},
                                    {" \t7 ", 7.0},
                                    {"1,234,567", 1234567.0},
                                    {"1,5", 15.0},
                                    {"-1,234.5", -1234.5},
                                    {"+3", 3.0},
                                    {".5", 0.5},
                                    {"5.", 5.0},
                                    {"1e3", 1000.0},
                                    {"1D3", 1000.0},
                                    {"1e-999", 0.0}}) {
    EXPECT_EQ(number(text), value) << text;
  }
  for (const char* text :
       {"",   " ",  "--",   "-",     ".",     "abc", "7x",   "1 2", "1e",  "1e+", "1.2.3",
        ",1", "1,", "1,,2", "1.0,5", "1e1,0", "+-1", "0x1F", "&H1", "inf", "nan", "7\n8"}) {
    EXPECT_EQ(error_of([&] { number(text); }), "Type mismatch") << text;
  }
}

TEST(Number, DecimalTextIsWholeAndPlain) {
  for (const auto& [value, text] : {std::pair{0.0, "0"},
                                    {-0.0, "0"},
                                    {-0.4, "0"},
                                    {0.5, "0"},
                                    {1.5, "2"},
                                    {2.5, "2"},
                                    {-7.0, "-7"},
                                    {4294967295.0, "4294967295"},
                                    {9007199254740993.0, "9007199254740992"},
                                    {9223372036854775808.0, "9223372036854775808"},
                                    {18446744073709551616.0, "18446744073709551616"},
                                    {1e22, "10000000000000000000000"},
                                    {1e23, "99999999999999991611392"},
                                    {-1e20, "-100000000000000000000"}}) {
    EXPECT_EQ(decimal_text(value), text);
  }
  const double largest = std::numeric_limits<double>::max();
  EXPECT_EQ(decimal_text(largest).size(), 309U);
  EXPECT_EQ(number(decimal_text(largest)), largest);
  for (const double value : {kInfinity, -kInfinity, kNan}) {
    EXPECT_EQ(error_of([=] { decimal_text(value); }), "Overflow");
    EXPECT_EQ(error_of([=] { thousands(value); }), "Overflow");
  }
}

TEST(Number, ThousandsPicture) {
  for (const char* text : {"7", "999", "-123", "1,234", "--", "12x", "inf", "1e999", ""}) {
    EXPECT_EQ(thousands(text), text);
  }
  for (const auto& [text, shown] : {std::pair{"0", ""},
                                    {"0.2", ""},
                                    {"1000", "1,000"},
                                    {"123456", "123,456"},
                                    {"1234567", "1,234,567"},
                                    {"-1234", "-1,234"},
                                    {"1e6", "1,000,000"}}) {
    EXPECT_EQ(thousands(text), shown) << text;
  }
  EXPECT_EQ(thousands(4294967295.0), "4,294,967,295");
}

TEST(FieldNumber, FollowsTheText) {
  FieldNumber field;
  for (const auto& [text, number] :
       {std::pair{"", 0.0}, {"7", 7.0}, {"7", 7.0}, {"70", 70.0}, {"x", 0.0}, {"7", 7.0}}) {
    EXPECT_EQ(field.of(text), number) << text;
  }
  const std::string error = error_of([] { val("1e999"); });
  for (int i = 0; i < 2; ++i) EXPECT_EQ(error_of([&] { field.of("1e999"); }), error);
  EXPECT_EQ(field.of("7"), 7.0);
}

struct CommaPoint : std::numpunct<char> {
  [[nodiscard]] char do_decimal_point() const override { return ','; }
  [[nodiscard]] char do_thousands_sep() const override { return '.'; }
  [[nodiscard]] std::string do_grouping() const override { return "\3"; }
};

TEST(Number, TheMachinesLocaleChangesNothing) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaPoint));
  EXPECT_EQ(val("1.5"), 1.5);
  EXPECT_EQ(number("1,234.5"), 1234.5);
  EXPECT_EQ(decimal_text(1234567), "1234567");
  EXPECT_EQ(thousands(1234567.0), "1,234,567");
  std::locale::global(before);
}

}  // namespace
}  // namespace velmora
