// Numbers and addresses: every text and every value gives a value or the platform's error.
#include <cmath>
#include <cstring>

#include "fuzzed_parts.h"
#include "platform/number.h"
#include "protocol/conversions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  Input input(data, size);
  CountingLog log;
  const std::string bits(input.piece());
  double value = 0;
  std::memcpy(&value, bits.data(), std::min(bits.size(), sizeof value));
  const std::string_view text = input.rest();
  reads([&] { value = val(text); });
  reads([&] { value = number(text); });
  for (const double each : {value, typed_number(text)}) {
    reads([&] {
      require(static_cast<double>(to_byte(each)) == std::nearbyint(each), "a byte is exact");
    });
    reads([&] {
      require(static_cast<double>(to_int16(each)) == std::nearbyint(each), "16 bits are exact");
    });
    reads([&] {
      require(static_cast<double>(to_int32(each)) == std::nearbyint(each), "32 bits are exact");
    });
    reads([&] { to_single(each); });
    require(to_port(unsigned_port(to_port(each))) == to_port(each), "a port comes back");
    reads([&] {
      const std::string four = Dword_to_Str(each);
      require(four.size() == 4, "a number has four bytes");
      const double back = Str_to_Dword(four, log);
      if (each >= 0) require(back == std::nearbyint(to_single(each)), "and comes back as a single");
    });
    reads([&] { decimal_text(each); });
    reads([&] { thousands(each); });
  }
  thousands(text);
  const CheckedHost host = Check_IP(text);
  if (host.message.empty()) {
    require(std::count(host.address.begin(), host.address.end(), '.') >= 3,
            "a host has three dots");
  }
  const std::string four = IPdots_to_DwordStr(text, log);
  require(four.size() == 4 || four == "-1", "an address has four bytes");
  reads([&] { Word_to_Str(Str_to_Word(text)); });
  reads([&] { dotted_address(text); });
  guid_text(text);
  return 0;
}
