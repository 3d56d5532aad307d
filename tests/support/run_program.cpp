#include "tests/support/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string_view>
#include <system_error>

namespace orx::test {

namespace {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }
  void reset(int number) {
    close();
    number_ = number;
  }
  void close() {
    if (number_ >= 0) (void)::close(number_);
    number_ = -1;
  }
  [[nodiscard]] int get() const { return number_; }

 private:
  int number_ = -1;
};

struct Pipe {
  Descriptor read, write;
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
    read.reset(ends[0]);
    write.reset(ends[1]);
  }
};

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> result;
  result.reserve(words.size() + 1);
  for (std::string& word : words) result.push_back(word.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environmentOf(const Program& program) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const auto name = text.substr(0, text.find('=') + 1);
    bool replaced = false;
    for (const auto& added : program.environment) replaced |= added.starts_with(name);
    if (!replaced) all.emplace_back(text);
  }
  all.insert(all.end(), program.environment.begin(), program.environment.end());
  return all;
}

// Reads once from a stream that is ready; closes it at its end.
void collect(Descriptor& stream, std::string& text) {
  std::array<char, 4096> block{};
  const auto count = read(stream.get(), block.data(), block.size());
  if (count > 0) return void(text.append(block.data(), static_cast<std::size_t>(count)));
  if (count == 0 || errno != EINTR) stream.close();
}

// Writes once what the program is ready to take; closes the stream when all is written.
void feed(Descriptor& stream, std::string_view& rest) {
  const auto count = write(stream.get(), rest.data(), rest.size());
  if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
  if (rest.empty() || (count < 0 && errno != EINTR && errno != EAGAIN)) stream.close();
}

// Serves the three streams until the program has closed its two. A negative number is no stream
// to poll. Returns false when the time is over first.
bool serve(const Program& program, Pipe& in, Pipe& out, Pipe& err, ProgramResult& result) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(program.timeoutSeconds);
  std::string_view rest = program.input;
  if (rest.empty()) in.write.close();
  while (out.read.get() >= 0 || err.read.get() >= 0) {
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

void takeSignals() {
  for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGHUP}) (void)std::signal(number, SIG_DFL);
}

ProgramResult runProgram(const Program& program) {
  std::vector<std::string> words = program.arguments;
  words.insert(words.begin(), program.file.string());
  std::vector<std::string> variables = environmentOf(program);
  const auto argv = pointers(words);
  const auto environment = pointers(variables);
  Pipe in, out, err;
  (void)fcntl(in.write.get(), F_SETFL, O_NONBLOCK);
  (void)std::signal(SIGPIPE, SIG_IGN);

  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    takeSignals();
    (void)dup2(in.read.get(), STDIN_FILENO);
    (void)dup2(out.write.get(), STDOUT_FILENO);
    (void)dup2(err.write.get(), STDERR_FILENO);
    if (!program.directory.empty() && chdir(program.directory.c_str()) != 0) _exit(127);
    if (program.inChild) program.inChild();
    (void)execve(argv[0], argv.data(), environment.data());
    _exit(127);
  }
  in.read.close();
  out.write.close();
  err.write.close();

  ProgramResult result;
  if (!serve(program, in, out, err, result)) (void)kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  return result;
}

}  // namespace orx::test
