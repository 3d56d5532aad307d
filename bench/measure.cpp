// Measures a command:
//
//   measure RESULT COMMAND [ARGUMENT ...]
//
// RESULT gets one line: wall time in seconds and the highest private memory (RssAnon) in KB, looked
// at every two milliseconds. The exit code is the command's, 125 when it could not be run.
#include <fcntl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

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

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 3) return 125;
  const double start = now();
  const pid_t child = fork();
  if (child == 0) {
    execvp(argv[2], argv + 2);
    _exit(125);
  }
  long peak = 0;
  int status = 0;
  constexpr timespec pause{0, 2'000'000};
  while (waitpid(child, &status, WNOHANG) == 0) {
    peak = std::max(peak, privateMemory(child));
    (void)nanosleep(&pause, nullptr);
  }
  const double seconds = now() - start;
  std::FILE* result = std::fopen(argv[1], "we");
  if (result == nullptr) return 125;
  (void)std::fprintf(result, "%.3f %ld\n", seconds, peak);
  (void)std::fclose(result);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 125;
}
