#include "tests/support/terminal_run.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>

namespace orx::test {

namespace {

void startProgram(const Program& program, const TerminalRun& run) {
  std::vector<std::string> words = program.arguments;
  words.insert(words.begin(), program.file.string());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  for (const std::string& variable : program.environment) {
    const auto sign = variable.find('=');
    (void)setenv(variable.substr(0, sign).c_str(), variable.substr(sign + 1).c_str(), 1);
  }
  takeSignals();
  if (chdir(program.directory.c_str()) != 0) _exit(127);
  if (run.outputIsFile) (void)dup2(open("out", O_CREAT | O_WRONLY | O_TRUNC, 0600), STDOUT_FILENO);
  (void)execv(argv[0], argv.data());
  _exit(127);
}

std::size_t withoutBlanks(const std::string& line) {
  return line.find_last_not_of(' ') + 1;
}

// Carries out "\r" and "\n"; the programs draw with nothing else.
void render(TerminalResult& result) {
  std::string line;
  std::size_t at = 0;
  const auto endLine = [&] {
    line.resize(withoutBlanks(line));
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

TerminalResult runOnTerminal(const Program& program, const TerminalRun& run) {
  int terminal = -1;
  winsize size{.ws_row = 24, .ws_col = run.columns, .ws_xpixel = 0, .ws_ypixel = 0};
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child < 0) throw std::system_error(errno, std::generic_category(), "forkpty");
  if (child == 0) startProgram(program, run);

  TerminalResult result;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(program.timeoutSeconds);
  std::array<char, 4096> block{};
  while (true) {
    pollfd ready{terminal, POLLIN, 0};
    if (poll(&ready, 1, 100) > 0) {
      const auto count = read(terminal, block.data(), block.size());
      if (count <= 0) break;  // the program has closed the terminal
      result.drawn.append(block.data(), static_cast<std::size_t>(count));
      if (run.onDrawn) run.onDrawn(child, result.drawn);
    }
    if (std::chrono::steady_clock::now() > end) (void)kill(child, SIGKILL);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  (void)close(terminal);
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  render(result);
  return result;
}

}  // namespace orx::test
