// The name on disk for a name that a stranger chose: one clean entry, the same every time, and
// different for different names.
#include "transfer/disk_name.h"

#include "fuzzed_parts.h"
#include "platform/visible_text.h"
#include "transfer/parse_filename.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  Input input(data, size);
  const std::string first(input.piece());
  const std::string second(input.rest());
  for (const std::string& text : {first, second}) {
    const std::string name = disk_name(text);
    require(!name.empty() && name.size() <= kMaxDiskName, "an entry has a length");
    require(name.find('/') == std::string::npos && name != "." && name != "..", "it is one entry");
    require(escape_control_bytes(name) == name, "it holds no control bytes");
    require(name == disk_name(text), "it is the same every time");
    CountingLog log;
    parse_filename(text, log);
  }
  if (first != second) require(disk_name(first) != disk_name(second), "names stay different");
  return 0;
}
