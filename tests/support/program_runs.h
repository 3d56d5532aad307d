// Short ways to run a piece of code or one of the built programs for what it prints.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace orx::test {

// Words that blanks separate; "" stands for an empty one.
inline std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> std::quoted(word);) words.push_back(word);
  return words;
}

// One of the built programs with `directory` as its current one.
inline ProgramResult runIn(const TempDir& directory, const char* program,
                           std::vector<std::string> arguments, const std::string& input = "",
                           std::function<void()> inChild = {},
                           std::vector<std::string> environment = {}) {
  auto result = runProgram({.file = builtProgram(program),
                            .arguments = std::move(arguments),
                            .directory = directory.path(),
                            .environment = std::move(environment),
                            .input = input,
                            .inChild = std::move(inChild)});
  EXPECT_EQ(result.signal, 0) << result.errors;
  return result;
}

// A script with the built programs in its path, run in `directory`.
inline Program shellScript(const TempDir& directory, const std::string& script) {
  const std::string path = "PATH=" + programsDirectory().string() + ":/usr/bin:/bin";
  return {.file = "/bin/bash",
          .arguments = {"-c", script},
          .directory = directory.path(),
          .environment = {path, "TERM=xterm"}};
}

// What `action` writes to standard output.
template <typename Action>
std::string printed(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

// `expected` names members by their paths, {"/objects/0/recn": 1}, and with "#" behind it the
// number of its elements, {"/objects#": 3}; other members may be there too.
void expectJson(const std::string& text, const char* expected);

}  // namespace orx::test
