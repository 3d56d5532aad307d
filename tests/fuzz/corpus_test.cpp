// Every input that fuzzing has kept goes through its target again. A claim that does not hold ends
// the process, so each target has one of its own.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/fuzz/fuzz_target.h"
#include "tests/support/places.h"

namespace orx::fuzz {
namespace {

class Corpus : public testing::TestWithParam<std::pair<const std::string, Target>> {};

TEST_P(Corpus, Holds) {
  const auto& [name, target] = GetParam();
  std::vector<std::string> inputs;
  for (const auto& entry :
       std::filesystem::directory_iterator(test::sourceDirectory() / "tests/fuzz/corpus" / name)) {
    inputs.push_back(entry.path());
  }
  ASSERT_FALSE(inputs.empty());
  const auto replayAll = [&, chosen = target] {
    replay(chosen, inputs);
    std::exit(0);
  };
  EXPECT_EXIT(replayAll(), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpus, testing::ValuesIn(targets()),
                         [](const auto& info) { return info.param.first; });

}  // namespace
}  // namespace orx::fuzz
