// Runs a script on a pseudo-terminal and keeps what it draws.
#pragma once

#include <string>

#include "tests/support/program_runs.h"

namespace orx::test {

struct TerminalRun {
  int columns = 80;
  bool outputIsFile = false;   // standard output goes to the file "out" instead of the terminal
  bool isInterrupted = false;  // Ctrl-C is typed after 1.2 seconds
};

struct TerminalResult : ProgramResult {
  std::string drawn = {};   // every byte that came
  std::string screen = {};  // lines that are not empty at the end, as "\r" and blanks leave them
  std::size_t widest = 0;   // columns of the widest line, however short it stood there
};

[[nodiscard]] TerminalResult runOnTerminal(const TempDir& directory, const std::string& script,
                                           const TerminalRun& run);

}  // namespace orx::test
