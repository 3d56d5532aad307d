// Runs a whole program and collects what it leaves.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace orx::test {

struct Program {
  std::filesystem::path file = {};
  std::vector<std::string> arguments = {};    // without argv[0]
  std::filesystem::path directory = {};       // current directory of the program; empty: the test's
  std::vector<std::string> environment = {};  // NAME=value, added to the test's own
  std::string input = {};                     // its standard input
  int timeoutSeconds = 120;                   // it is killed after that
  // Called in the child right before the program starts: limits, closed streams, signals. Only
  // calls that are safe after fork.
  std::function<void()> inChild = {};
};

struct ProgramResult {
  int exitCode = -1;  // -1 when a signal ended the program
  int signal = 0;
  std::string output;  // standard output
  std::string errors;  // standard error
};

// For a child before it becomes a program: PIPE, INT, TERM and HUP end it, though this process may
// have been started in the background, which ignores INT.
void takeSignals();

// Throws std::system_error when there is no way to start a program at all; a program that cannot
// be executed ends with 127.
[[nodiscard]] ProgramResult runProgram(const Program& program);

}  // namespace orx::test
