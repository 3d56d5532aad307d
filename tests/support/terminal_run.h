// Runs a script on a pseudo-terminal and keeps what it draws.
#pragma once

#include <algorithm>
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

// Carries out "\r" and "\n"; the programs draw with nothing else.
inline void render(TerminalResult& result) {
  std::string line;
  std::size_t at = 0;
  const auto endLine = [&] {
    line.resize(line.find_last_not_of(' ') + 1);
    if (!line.empty()) result.screen += line + "\n";
    line.clear();
    at = 0;
  };
  for (const char c : result.drawn) {
    if (c == '\n') {
      endLine();
    } else if (c == '\r') {
      at = 0;
    } else {
      line.resize(std::max(line.size(), at + 1), ' ');
      line[at++] = c;
      result.widest = std::max(result.widest, line.size());
    }
  }
  endLine();
}

inline TerminalResult runOnTerminal(const TempDir& directory, const std::string& script,
                                    const TerminalRun& run) {
  writeFile(directory / "script.sh", script);
  const std::string command = "stty rows 24 -echo cols " + std::to_string(run.columns) +
                              "; exec bash ./script.sh" + (run.outputIsFile ? " > out" : "");
  const std::string typed = run.isInterrupted ? "sleep 1.2; printf '\\003'" : "true";
  TerminalResult result{runProgram(
      shellScript(directory, "{ " + typed + "; } | script -qec '" + command + "' /dev/null"))};
  result.drawn = result.output;
  render(result);
  return result;
}

}  // namespace orx::test
