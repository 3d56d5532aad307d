// Replays inputs where libFuzzer is not there:
//
//   orx_fuzz_replay TARGET FILE...
//
// Without arguments it lists the targets. 0 when every claim holds, 1 for an unusable command line.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/fuzz/fuzz_target.h"

namespace {

bool replay(orx::fuzz::EntryPoint target, const char* file) {
  std::ifstream in(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  if (!in) {
    (void)std::fprintf(stderr, "%s: cannot be read\n", file);
    return false;
  }
  (void)target(static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data())),
               bytes.size());
  return true;
}

}  // namespace

int main(int argc, char* argv[]) {
  const auto& targets = orx::fuzz::targets();
  const auto target = argc < 2 ? targets.end() : targets.find(argv[1]);
  if (target == targets.end()) {
    (void)std::fprintf(stderr, "orx_fuzz_replay TARGET FILE..., where TARGET is one of\n");
    for (const auto& [name, entryPoint] : targets)
      (void)std::fprintf(stderr, "  %s\n", name.c_str());
    return 1;
  }
  for (int i = 2; i < argc; ++i) {
    if (!replay(target->second, argv[i])) return 1;
  }
  return 0;
}
