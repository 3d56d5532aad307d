// The fenced blocks of the project's documents, for tests that check what these show.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/program_runs.h"

namespace orx::test {

using Lines = std::vector<std::string>;

inline std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

struct FencedBlock {
  std::string info;  // what stands behind the opening fence
  Lines lines = {};

  [[nodiscard]] bool isRun() const { return info.starts_with("sh run"); }
  // Its exit code: the number behind "run", or 0.
  [[nodiscard]] int exitCode() const { return std::atoi(info.substr(6).c_str()); }
};

// Runs the lines of a block "```sh run" by bash, which stops at the first command that fails.
inline ProgramResult runBlock(const FencedBlock& block, const TempDir& scratch,
                              const std::string& before = "") {
  const auto result = runProgram(
      shellScript(scratch, "set -e -o pipefail; " + before + "\n" + joined(block.lines)));
  EXPECT_EQ(result.exitCode, block.exitCode())
      << joined(block.lines) << result.output << result.errors;
  return result;
}

// The blocks of `file`, a path below the source directory, in order.
inline std::vector<FencedBlock> fencedBlocks(const std::string& file) {
  std::istringstream text(readFile(sourceDirectory() / file));
  std::vector<FencedBlock> blocks;
  bool inside = false;
  for (std::string line; std::getline(text, line);) {
    if (inside && line == "```") {
      inside = false;
    } else if (inside) {
      blocks.back().lines.push_back(line);
    } else if (line.starts_with("```")) {
      inside = true;
      blocks.push_back({line.substr(3)});
    }
  }
  EXPECT_FALSE(inside) << file << ": the last block has no end";
  return blocks;
}

}  // namespace orx::test
