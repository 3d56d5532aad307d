// Samples, held in memory.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orxkdb/sample/sample_writer.h"

namespace orx::test {

inline std::string sampleText(const orxkdb::FleetOptions& fleet, orxkdb::SampleOrder order) {
  std::string text;
  EXPECT_TRUE(orxkdb::writeSample(fleet, order, [&](std::string_view piece) {
    text += piece;
    return true;
  }));
  return text;
}

// The lines of a sample, or of another backup without carriage returns, without their ends.
inline std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    lines.push_back(text.substr(at, text.find('\n', at) - at));
  }
  return lines;
}

}  // namespace orx::test
