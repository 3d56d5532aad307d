// Runs the commands that README.md, docs/operations.md and docs/formats.md show.
//
// A block "```sh run" is run by bash, which stops at the first command that fails; its exit code is
// 0, or the number behind "run". A block "```output" directly after it holds what it prints, but
// for the build date. The blocks of a document run in order in one scratch directory.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/docs/fenced_blocks.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

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

// The documents show the scratch directory as this one.
std::string withShownPlace(std::string text, const std::string& scratch) {
  for (std::size_t at = text.find(scratch); at != std::string::npos; at = text.find(scratch)) {
    text.replace(at, scratch.size(), "/srv/tdv");
  }
  return text;
}

std::string withoutBuildDate(const std::string& text) {
  return std::regex_replace(text, std::regex("\\(built [^)]*\\)"), "(built ...)");
}

class Commands : public testing::TestWithParam<const char*> {};

TEST_P(Commands, WorkAsShown) {
  const std::vector<Step> steps = stepsOf(GetParam());
  ASSERT_FALSE(steps.empty());
  const test::TempDir scratch;
  const std::string path = "PATH=" + test::programsDirectory().string() + ":/usr/bin:/bin";
  for (const Step& step : steps) {
    const auto result =
        test::runProgram({.file = "/bin/bash",
                          .arguments = {"-e", "-o", "pipefail", "-c", "exec 2>&1\n" + step.script},
                          .directory = scratch.path(),
                          .environment = {path, "LC_ALL=C.UTF-8"}});
    EXPECT_EQ(result.exitCode, step.exitCode) << step.script << result.output;
    if (!step.output.has_value()) continue;
    const std::string output = withShownPlace(result.output, scratch.path().string());
    EXPECT_EQ(withoutBuildDate(output), withoutBuildDate(*step.output)) << step.script;
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, Commands,
                         testing::Values("README.md", "docs/operations.md", "docs/formats.md"),
                         [](const auto& document) {
                           return std::filesystem::path(document.param).stem().string();
                         });

}  // namespace
}  // namespace orx
