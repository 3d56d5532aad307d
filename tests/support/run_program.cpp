#include "tests/support/run_program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <future>
#include <string_view>
#include <system_error>

#include "platform/file.h"

namespace orx::test {

namespace {

struct Pipe {
  UniqueFd read, write;
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
    read = UniqueFd(ends[0]);
    write = UniqueFd(ends[1]);
  }
};

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> result;
  for (std::string& word : words) result.push_back(word.data());
  result.push_back(nullptr);
  return result;
}

std::string readToEnd(UniqueFd stream) {
  std::string text;
  std::array<char, 4096> block{};
  for (ssize_t count = 0; (count = readSome(stream.get(), block.data(), block.size())) > 0;) {
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

void ProgramResult::setEnd(int status) {
  if (WIFEXITED(status)) exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) signal = WTERMSIG(status);
}

ProgramStart::ProgramStart(const Program& program)
    : program_(program), words_{program.file.string()} {
  words_.insert(words_.end(), program.arguments.begin(), program.arguments.end());
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const auto name = text.substr(0, text.find('=') + 1);
    const auto isSame = [name](const std::string& added) { return added.starts_with(name); };
    if (std::ranges::none_of(program.environment, isSame)) variables_.emplace_back(text);
  }
  variables_.insert(variables_.end(), program.environment.begin(), program.environment.end());
  argv_ = pointers(words_);
  environment_ = pointers(variables_);
}

void ProgramStart::become(int in, int out, int err) const {
  (void)dup2(in, STDIN_FILENO);
  (void)dup2(out, STDOUT_FILENO);
  (void)dup2(err, STDERR_FILENO);
  for (const int number : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGHUP}) {
    (void)std::signal(number, SIG_DFL);
  }
  (void)setpgid(0, 0);
  (void)alarm(program_.timeoutSeconds);
  const bool isThere = program_.directory.empty() || chdir(program_.directory.c_str()) == 0;
  if (isThere && program_.inChild) program_.inChild();
  if (isThere) (void)execve(argv_[0], argv_.data(), environment_.data());
  _exit(127);
}

ProgramResult runProgram(const Program& program) {
  const ProgramStart start(program);
  Pipe in, out, err;
  (void)std::signal(SIGPIPE, SIG_IGN);
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) start.become(in.read.get(), out.write.get(), err.write.get());
  for (UniqueFd* const end : {&in.read, &out.write, &err.write}) end->reset();
  auto output = std::async(std::launch::async, readToEnd, std::move(out.read));
  auto errors = std::async(std::launch::async, readToEnd, std::move(err.read));
  (void)writeAll(in.write.get(), program.input);
  in.write.reset();
  ProgramResult result;
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  result.setEnd(status);
  if (result.signal == SIGALRM) (void)kill(-child, SIGKILL);  // what a script has started
  result.output = output.get();
  result.errors = errors.get();
  return result;
}

}  // namespace orx::test
