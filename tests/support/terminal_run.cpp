#include "tests/support/terminal_run.h"

#include <algorithm>

namespace orx::test {

namespace {

// Carries out "\r" and "\n"; the programs draw with nothing else.
void render(TerminalResult& result) {
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

}  // namespace

TerminalResult runOnTerminal(const TempDir& directory, const std::string& script,
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
