// A person's programs send the input's lines to the control socket; every answer is one line.
#include "fuzzed_parts.h"
#include "platform/sim/sim_control.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora::fuzz;
  FuzzedServent fuzzed;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  for (int i = 0; i < 200 && !input.empty() && fuzzed.host.control().is_open(); ++i) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    const auto answers = fuzzed.host.control().say(input.substr(0, end), 1 + end % 3);
    for (const std::string& answer : answers) {
      require(answer.starts_with('{') && answer.find('\n') == std::string::npos,
              "an answer is one line of JSON");
    }
    input.remove_prefix(std::min(end + 1, input.size()));
    fuzzed.world.run_for(1);
  }
  fuzzed.servent->shutdown();
  return 0;
}
