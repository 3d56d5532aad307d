// The fenced blocks of the project's documents, for tests that check what these show.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/places.h"
#include "tests/support/temp_dir.h"

namespace orx::test {

using Lines = std::vector<std::string>;

struct FencedBlock {
  std::string info;  // what stands behind the opening fence
  Lines lines = {};
};

// The blocks of `file`, a path below the source directory, in order.
inline std::vector<FencedBlock> fencedBlocks(const std::string& file) {
  std::istringstream text(readFile(test::sourceDirectory() / file));
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
