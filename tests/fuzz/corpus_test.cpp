// Every input that fuzzing has kept goes through its target again. A claim that does not hold ends
// the process, so each target has one of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "tests/fuzz/fuzz_files.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/places.h"

namespace orx::fuzz {
namespace {

std::filesystem::path corpusOf(const std::string& target) {
  return test::sourceDirectory() / "tests/fuzz/corpus" / target;
}

std::vector<std::string> inputsOf(const std::string& target) {
  std::vector<std::string> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(corpusOf(target))) {
    inputs.push_back(entry.path());
  }
  std::ranges::sort(inputs);
  return inputs;
}

[[noreturn]] void replay(const std::string& target) {
  for (const std::string& input : inputsOf(target)) {
    (void)std::fprintf(stderr, "%s\n", input.c_str());
    const std::string bytes = readFile(input);
    (void)targets().at(target)(
        static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data())), bytes.size());
  }
  std::exit(0);
}

std::vector<std::string> names() {
  std::vector<std::string> names;
  for (const auto& [name, entryPoint] : targets()) names.push_back(name);
  return names;
}

class Corpus : public testing::TestWithParam<std::string> {};

TEST_P(Corpus, Holds) {
  ASSERT_FALSE(inputsOf(GetParam()).empty());
  EXPECT_EXIT(replay(GetParam()), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpus, testing::ValuesIn(names()),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace orx::fuzz
