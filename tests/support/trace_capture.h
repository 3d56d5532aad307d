// What an action sends to the trace.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "platform/trace.h"

namespace orx {

// Runs `action` with the trace set to `patterns`; returns its lines without time, unit, function
// and line number.
template <typename Action>
std::vector<std::string> captureTrace(const std::string& patterns, Action action) {
  const std::string file = testing::TempDir() + "orx_capture.txt";
  (void)std::remove(file.c_str());
  trace_setting::configure(patterns, file);
  action();
  trace_setting::configure("", "");
  std::vector<std::string> lines;
  std::ifstream in(file);
  const std::regex head("^[0-9:.]{15} [A-Z0-9]+ [A-Za-z0-9_: ]+:[0-9]+ ");
  for (std::string line; std::getline(in, line);) {
    lines.push_back(std::regex_replace(line, head, ""));
  }
  return lines;
}

}  // namespace orx
