// Bad conditions for a program to start under; for Program::inChild.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <functional>

namespace orx::test {

inline void closedOutput() {
  (void)close(STDOUT_FILENO);
}
inline void fullOutput() {
  (void)dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
}
inline void brokenPipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) == 0) (void)dup2(ends[1], STDOUT_FILENO);
  (void)close(ends[0]);
}
constexpr std::array<void (*)(), 3> brokenOutputs{closedOutput, fullOutput, brokenPipe};

// As a disk that is full behind the first `bytes` of any file.
inline std::function<void()> fileLimit(rlim_t bytes) {
  return [=] {
    const rlimit limit{bytes, bytes};
    (void)setrlimit(RLIMIT_FSIZE, &limit);
  };
}

}  // namespace orx::test
