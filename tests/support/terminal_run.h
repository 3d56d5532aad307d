// Runs a whole program on a pseudo-terminal and keeps what it draws.
#pragma once

#include <functional>
#include <string>

#include "tests/support/run_program.h"

namespace orx::test {

struct TerminalRun {
  unsigned short columns = 80;
  bool outputIsFile = false;  // standard output goes to the file "out" instead of the terminal
  // Called with the program's process and everything drawn so far, whenever something comes.
  std::function<void(int process, const std::string& drawn)> onDrawn = {};
};

struct TerminalResult {
  int exitCode = -1;
  int signal = 0;
  std::string drawn;       // every byte that came
  std::string screen;      // lines that are not empty at the end, as "\r" and blanks leave them
  std::size_t widest = 0;  // columns of the widest line, however short it stood there
};

[[nodiscard]] TerminalResult runOnTerminal(const Program& program, const TerminalRun& run);

}  // namespace orx::test
