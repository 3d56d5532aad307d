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
  unsigned timeoutSeconds = 120;              // SIGALRM ends it after that, SIGKILL its group
  // Called in the child right before the program starts: limits, closed streams, signals. Only
  // calls that are safe after fork.
  std::function<void()> inChild = {};
};

struct ProgramResult {
  int exitCode = -1;  // -1 when a signal ended the program
  int signal = 0;
  std::string output;  // standard output
  std::string errors;  // standard error

  void setEnd(int status);  // as waitpid gives it
};

// What a child needs to become a program, made before the fork.
class ProgramStart {
 public:
  explicit ProgramStart(const Program& program);
  // With these as its streams. PIPE, XFSZ, INT, TERM and HUP end it, though this process may have
  // been started where they are ignored, INT in the background. 127 when it cannot be executed.
  [[noreturn]] void become(int in, int out, int err) const;

 private:
  const Program& program_;
  std::vector<std::string> words_, variables_;
  std::vector<char*> argv_, environment_;
};

// Throws std::system_error when there is no way to start a program at all.
[[nodiscard]] ProgramResult runProgram(const Program& program);

}  // namespace orx::test
