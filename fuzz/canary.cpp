// The proof that fuzzing finds faults: a planted one, of the kind that all other targets look for.
// It copies as many bytes as a descriptor's header claims, not as many as are there. It is not part
// of the program; scripts/fuzz fails when it is not found.
#include <cstring>
#include <vector>

#include "fuzzed_parts.h"
#include "protocol/descriptor_header.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  if (size < kHeaderSize) return 0;
  const std::vector<char> bytes(data, data + size);
  const DescriptorHeader header = str_to_header(std::string_view(bytes.data(), kHeaderSize));
  if (header.function != kPush || header.payload_length < 1) return 0;
  std::vector<char> payload(static_cast<std::size_t>(header.payload_length));
  std::memcpy(payload.data(), bytes.data() + kHeaderSize, payload.size());
  const volatile char last = payload.back();
  static_cast<void>(last);
  return 0;
}
