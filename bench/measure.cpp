// Measures a command:
//
//   measure [--limit SECONDS] [--sync FILE] RESULT COMMAND [ARGUMENT ...]
//
// RESULT gets one line: wall time in seconds and the highest private memory (RssAnon) in KB, looked
// at every two milliseconds; the end of the command is noticed at once. With --sync the time ends
// when FILE, which the command made, is on the disk. The exit code is the command's; 124 when it
// was killed because it took longer than the limit, and then there is no result; 125 when it could
// not be run or its file not synced.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr int limitReached = 124;
constexpr int notMeasured = 125;

struct Options {
  double limit = 0;  // none
  const char* syncedFile = nullptr;
  const char* result = nullptr;
  char** command = nullptr;
};

std::optional<Options> readOptions(char** argument) {
  Options options;
  for (; *argument != nullptr && argument[1] != nullptr; argument += 2) {
    if (*argument == std::string_view("--limit")) {
      options.limit = std::atof(argument[1]);
    } else if (*argument == std::string_view("--sync")) {
      options.syncedFile = argument[1];
    } else {
      options.result = *argument;
      options.command = argument + 1;
      return options;
    }
  }
  return std::nullopt;
}

double now() {
  timespec time{};
  (void)clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

long privateMemory(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("RssAnon:")) return std::strtol(line.c_str() + 8, nullptr, 10);
  }
  return 0;
}

bool syncFile(const char* name) {
  const int file = open(name, O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool synced = fsync(file) == 0;
  return close(file) == 0 && synced;
}

bool writeResult(const char* name, double seconds, long peak) {
  std::FILE* result = std::fopen(name, "we");
  if (result == nullptr) return false;
  const bool written = std::fprintf(result, "%.4f %ld\n", seconds, peak) > 0;
  return std::fclose(result) == 0 && written;
}

}  // namespace

int main(int, char* argv[]) {
  const std::optional<Options> options = readOptions(argv + 1);
  if (!options) return notMeasured;
  sigset_t childEnds;
  sigset_t before;
  (void)sigemptyset(&childEnds);
  (void)sigaddset(&childEnds, SIGCHLD);
  (void)sigprocmask(SIG_BLOCK, &childEnds, &before);
  const double start = now();
  const pid_t child = fork();
  if (child < 0) return notMeasured;
  if (child == 0) {
    (void)sigprocmask(SIG_SETMASK, &before, nullptr);
    execvp(options->command[0], options->command);
    _exit(notMeasured);
  }
  long peak = 0;
  int status = 0;
  constexpr timespec pause{0, 2'000'000};
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (options->limit > 0 && now() - start > options->limit) {
      (void)kill(child, SIGKILL);
      (void)waitpid(child, &status, 0);
      return limitReached;
    }
    peak = std::max(peak, privateMemory(child));
    (void)sigtimedwait(&childEnds, nullptr, &pause);
  }
  if (options->syncedFile != nullptr && !syncFile(options->syncedFile)) return notMeasured;
  const double seconds = now() - start;
  if (!writeResult(options->result, seconds, peak)) return notMeasured;
  return WIFEXITED(status) ? WEXITSTATUS(status) : notMeasured;
}
