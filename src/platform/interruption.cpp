#include "platform/interruption.h"

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <new>
#include <vector>

#include "platform/file.h"

namespace orx {

namespace {

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int signalExitCode = 128;  // plus the number of the signal, as shells have it
constexpr std::size_t stackSize = std::size_t{256} * 1024;

struct Temporary {
  std::string path;
  int fd;
};

struct State {
  std::mutex mutex;
  std::vector<Temporary> temporaries;
  bool published = false;
  sigset_t awaited{};
  Farewell* farewell = nullptr;
};

// Never destroyed: the waiting thread may outlive every other object. Nor allocated: it is there
// before anything could tell of a want of memory.
State& state() {
  alignas(State) static std::array<std::byte, sizeof(State)> storage;
  static State* const instance = new (storage.data()) State;
  return *instance;
}

// What was printed so far, unless its receiver would keep the process waiting.
void flushOutput() {
  if (::ftrylockfile(stdout) != 0) return;
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  if (::poll(&output, 1, 0) > 0) (void)std::fflush(stdout);
  ::funlockfile(stdout);
}

void removeTemporaries() {
  for (const Temporary& file : state().temporaries) {
    if (leadsTo(file.path, file.fd)) (void)removeFile(file.path);
  }
}

[[noreturn]] void* endWhenInterrupted(void*) {
  int number = 0;
  while (::sigwait(&state().awaited, &number) != 0) {
  }
  endProcess(*state().farewell, signalExitCode + number);
}

bool isIgnored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

bool startThread() {
  pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) return false;
  (void)::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  (void)::pthread_attr_setstacksize(&attributes, stackSize);
  pthread_t thread{};
  const int error = ::pthread_create(&thread, &attributes, endWhenInterrupted, nullptr);
  (void)::pthread_attr_destroy(&attributes);
  return error == 0;
}

}  // namespace

CriticalStep::CriticalStep() : lock_(state().mutex) {}

// NOLINTBEGIN(readability-convert-member-functions-to-static): they need the lock of the step
void CriticalStep::removeWhenInterrupted(const std::string& path, int fd) {
  state().temporaries.push_back({path, fd});
}

void CriticalStep::leaveAlone(const std::string& path) {
  std::erase_if(state().temporaries, [&path](const Temporary& file) { return file.path == path; });
}

void CriticalStep::notePublished() {
  state().published = true;
}
// NOLINTEND(readability-convert-member-functions-to-static)

bool hasPublished() {
  const CriticalStep step;
  return state().published;
}

void endProcess(Farewell& farewell, int exitCode) {
  state().mutex.lock();  // for good: nothing may be published from now on
  removeTemporaries();
  flushOutput();
  farewell(state().published);
  ::_exit(exitCode);
}

void awaitInterruption(Farewell& farewell) {
  state().farewell = &farewell;
  (void)::sigemptyset(&state().awaited);
  for (const int number : signals) {
    if (!isIgnored(number)) (void)::sigaddset(&state().awaited, number);
  }
  sigset_t before{};
  if (::pthread_sigmask(SIG_BLOCK, &state().awaited, &before) != 0) return;
  if (!startThread()) (void)::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace orx
