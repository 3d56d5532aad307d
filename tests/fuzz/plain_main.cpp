// Replays inputs where libFuzzer is not there:
//
//   orx_fuzz_replay TARGET FILE...
//
// Without arguments it lists the targets. 0 when every claim holds, 1 for an unusable command line.
#include <cstdio>

#include "tests/fuzz/fuzz_target.h"

int main(int argc, char* argv[]) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const auto& targets = orx::fuzz::targets();
  const auto target = words.empty() ? targets.end() : targets.find(words.front());
  if (target == targets.end()) {
    (void)std::fprintf(stderr, "orx_fuzz_replay TARGET FILE..., where TARGET is one of\n");
    for (const auto& known : targets) (void)std::fprintf(stderr, "  %s\n", known.first.c_str());
    return 1;
  }
  orx::fuzz::replay(target->second, {words.begin() + 1, words.end()});
  return 0;
}
