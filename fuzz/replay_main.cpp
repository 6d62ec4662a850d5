// Runs one fuzz target over files, without a fuzzer: the kept inputs in every test run, and a
// finding under a debugger. Usage: fuzz_replay TARGET FILE_OR_FOLDER...
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#define TARGET(name) extern "C" int fuzz_##name(const std::uint8_t* data, std::size_t size);
#include "fuzz_targets.inc"
#undef TARGET

namespace {

struct Target {
  const char* name;
  int (*run)(const std::uint8_t*, std::size_t);
};

constexpr Target kTargets[] = {
#define TARGET(name) {#name, fuzz_##name},
#include "fuzz_targets.inc"
#undef TARGET
};

void replay(const Target& target, const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(file), {}};
  std::fprintf(stderr, "%s\n", path.c_str());  // the last one named is the one that failed
  target.run(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  const Target* chosen = nullptr;
  for (const Target& target : kTargets) {
    if (argc > 2 && std::strcmp(argv[1], target.name) == 0) chosen = &target;
  }
  if (chosen == nullptr) {
    std::fprintf(stderr, "usage: fuzz_replay TARGET FILE_OR_FOLDER...\n");
    return 2;
  }
  std::size_t files = 0;
  for (int i = 2; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      replay(*chosen, argv[i]);
      ++files;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      replay(*chosen, entry.path());
      ++files;
    }
  }
  std::printf("%zu inputs of %s\n", files, chosen->name);
  return files == 0 ? 1 : 0;
}
