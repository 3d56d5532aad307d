#include "tests/support/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
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

// Reads once from a stream that is ready; closes it at its end.
void collect(UniqueFd& stream, std::string& text) {
  std::array<char, 4096> block{};
  const ssize_t count = readSome(stream.get(), block.data(), block.size());
  if (count <= 0) return stream.reset();
  text.append(block.data(), static_cast<std::size_t>(count));
}

// Writes once what the program is ready to take; closes the stream when all is written.
void feed(UniqueFd& stream, std::string_view& rest) {
  const ssize_t count = write(stream.get(), rest.data(), rest.size());
  if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
  if (rest.empty() || (count < 0 && errno != EINTR && errno != EAGAIN)) stream.reset();
}

// Serves the three streams until the program has closed its two. A negative number is no stream
// to poll. Returns false when the time is over first.
bool serve(const Program& program, Pipe& in, Pipe& out, Pipe& err, ProgramResult& result) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(program.timeoutSeconds);
  std::string_view rest = program.input;
  if (rest.empty()) in.write.reset();
  while (out.read.valid() || err.read.valid()) {
    std::array<pollfd, 3> streams{
        {{in.write.get(), POLLOUT, 0}, {out.read.get(), POLLIN, 0}, {err.read.get(), POLLIN, 0}}};
    if (poll(streams.data(), streams.size(), 100) > 0) {
      if (streams[0].revents != 0) feed(in.write, rest);
      if (streams[1].revents != 0) collect(out.read, result.output);
      if (streams[2].revents != 0) collect(err.read, result.errors);
    }
    if (std::chrono::steady_clock::now() > end) return false;
  }
  return true;
}

}  // namespace

void ProgramResult::setEnd(int status) {
  if (WIFEXITED(status)) exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) signal = WTERMSIG(status);
}

void ProgramResult::waitForEnd(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  setEnd(status);
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

void ProgramStart::become() const {
  for (const int number : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGHUP}) {
    (void)std::signal(number, SIG_DFL);
  }
  const bool isThere = program_.directory.empty() || chdir(program_.directory.c_str()) == 0;
  if (isThere && program_.inChild) program_.inChild();
  if (isThere) (void)execve(argv_[0], argv_.data(), environment_.data());
  _exit(127);
}

ProgramResult runProgram(const Program& program) {
  const ProgramStart start(program);
  Pipe in, out, err;
  (void)fcntl(in.write.get(), F_SETFL, O_NONBLOCK);
  (void)std::signal(SIGPIPE, SIG_IGN);

  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    (void)dup2(in.read.get(), STDIN_FILENO);
    (void)dup2(out.write.get(), STDOUT_FILENO);
    (void)dup2(err.write.get(), STDERR_FILENO);
    start.become();
  }
  in.read.reset();
  out.write.reset();
  err.write.reset();

  ProgramResult result;
  if (!serve(program, in, out, err, result)) (void)kill(child, SIGKILL);
  result.waitForEnd(child);
  return result;
}

}  // namespace orx::test
