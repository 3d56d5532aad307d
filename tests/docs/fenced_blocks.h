// The fenced blocks of the project's documents, for tests that check what these show.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temp_dir.h"

namespace orx::test {

using Lines = std::vector<std::string>;

// The lines of every block of `file` (relative to the source directory) whose opening fence has the
// info string `info`, in order.
inline std::vector<Lines> fencedBlocks(std::string_view file, std::string_view info) {
  std::istringstream text(readFile(std::filesystem::path(ORX_SOURCE_DIR) / file));
  const std::string opening = std::string("```").append(info);
  std::vector<Lines> blocks;
  bool inside = false;
  for (std::string line; std::getline(text, line);) {
    if (inside && line == "```") {
      inside = false;
    } else if (inside) {
      blocks.back().push_back(line);
    } else if (line == opening) {
      inside = true;
      blocks.emplace_back();
    }
  }
  EXPECT_FALSE(inside) << file << ": a block " << info << " has no end";
  return blocks;
}

}  // namespace orx::test
