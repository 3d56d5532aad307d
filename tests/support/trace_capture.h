// What an action sends to the trace.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "platform/trace.h"
#include "tests/support/temp_dir.h"

namespace orx {

// A trace line without its time, unit, function and line number.
inline std::string withoutHead(const std::string& line) {
  constexpr std::size_t timeLength = 15;
  std::size_t colon = line.find(':', timeLength);
  while (colon != std::string::npos) {
    const std::size_t end = line.find_first_not_of("0123456789", colon + 1);
    if (end != std::string::npos && end > colon + 1 && line[end] == ' ')
      return line.substr(end + 1);
    colon = line.find(':', colon + 1);
  }
  return line;
}

// Runs `action` with the trace set to `patterns`; returns its lines.
template <typename Action>
std::vector<std::string> captureWholeTrace(const std::string& patterns, Action action) {
  const test::TempDir directory;
  const std::string file = directory.file("trace");
  trace_setting::configure(patterns, file);
  action();
  trace_setting::configure("", "");
  std::vector<std::string> lines;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The same without the heads of the lines.
template <typename Action>
std::vector<std::string> captureTrace(const std::string& patterns, Action action) {
  std::vector<std::string> lines = captureWholeTrace(patterns, action);
  for (std::string& line : lines) line = withoutHead(line);
  return lines;
}

}  // namespace orx
