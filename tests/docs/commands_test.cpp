// Runs the commands that README.md, docs/operations.md and docs/formats.md show.
//
// A block "```sh run" is run by bash, which stops at the first command that fails; its exit code is
// 0, or the number behind "run". A block "```output" directly after it holds what it prints, but
// for the build date. The blocks of a document run in order in one scratch directory.
#include <optional>
#include <regex>

#include "tests/docs/fenced_blocks.h"
#include "tests/support/program_runs.h"

namespace orx {
namespace {

struct Step {
  std::string script;
  int exitCode = 0;
  std::optional<std::string> output = {};
};

std::string joined(const test::Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

std::vector<Step> stepsOf(const std::string& file) {
  std::vector<Step> steps;
  for (const test::FencedBlock& block : test::fencedBlocks(file)) {
    std::istringstream info(block.info);
    std::string language, run;
    info >> language >> run;
    if (language == "sh" && run == "run") {
      steps.push_back({joined(block.lines)});
      info >> steps.back().exitCode;
      if (info.fail()) steps.back().exitCode = 0;
    } else if (language == "output" && !steps.empty()) {
      steps.back().output = joined(block.lines);
    }
  }
  return steps;
}

// With the scratch directory as the documents show it, and without the build date.
std::string comparable(std::string text, const test::TempDir& scratch) {
  text = std::regex_replace(text, std::regex(scratch.path().string()), "/srv/tdv");
  return std::regex_replace(text, std::regex("\\(built [^)]*\\)"), "(built ...)");
}

class Commands : public testing::TestWithParam<const char*> {};

TEST_P(Commands, WorkAsShown) {
  const std::vector<Step> steps = stepsOf(GetParam());
  ASSERT_FALSE(steps.empty());
  const test::TempDir scratch;
  for (const Step& step : steps) {
    const auto result = test::runProgram(
        test::shellScript(scratch, "set -e -o pipefail; exec 2>&1\n" + step.script));
    EXPECT_EQ(result.exitCode, step.exitCode) << step.script << result.output;
    if (!step.output.has_value()) continue;
    EXPECT_EQ(comparable(result.output, scratch), comparable(*step.output, scratch)) << step.script;
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, Commands,
                         testing::Values("README.md", "docs/operations.md", "docs/formats.md"),
                         [](const auto& document) {
                           return std::filesystem::path(document.param).stem().string();
                         });

}  // namespace
}  // namespace orx
