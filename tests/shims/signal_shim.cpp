// Preloaded into a program: sends it a signal when it makes a certain system call, so that a test
// meets any phase of a run without waiting for a time.
//
//   ORX_SIGNAL    the number of the signal
//   ORX_SIGNAL_AT the call: pread, read, pwrite, fsync, exchange or rename
//
// Only calls on files in the current directory count. The call is held until the process ends; but
// an exchange, a rename and the sync of a directory are parts of a step that the program finishes
// first, so those are made and go on.
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::atomic<bool> sent = false;

bool isChosen(const char* call) {
  const char* chosen = std::getenv("ORX_SIGNAL_AT");
  return chosen != nullptr && std::strcmp(chosen, call) == 0;
}

bool isInDirectory(int fd) {
  char link[64], path[PATH_MAX + 1], directory[PATH_MAX + 1];
  (void)std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t length = ::readlink(link, path, PATH_MAX);
  if (length <= 0 || ::getcwd(directory, sizeof directory) == nullptr) return false;
  path[length] = '\0';
  return std::strncmp(path, directory, std::strlen(directory)) == 0;
}

void send() {
  const char* number = std::getenv("ORX_SIGNAL");
  if (number != nullptr && !sent.exchange(true)) (void)::kill(::getpid(), std::atoi(number));
}

// The process ends while one of its threads waits here.
void sendAndWait(const char* call, int fd) {
  if (!isChosen(call) || !isInDirectory(fd)) return;
  send();
  struct stat file {};
  while (::fstat(fd, &file) == 0 && !S_ISDIR(file.st_mode)) (void)::pause();
}

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

ssize_t pread(int fd, void* buffer, size_t size, off_t offset) {
  sendAndWait("pread", fd);
  static const auto real = next<ssize_t(int, void*, size_t, off_t)>("pread");
  return real(fd, buffer, size, offset);
}

ssize_t pread64(int fd, void* buffer, size_t size, off64_t offset) {
  sendAndWait("pread", fd);
  static const auto real = next<ssize_t(int, void*, size_t, off64_t)>("pread64");
  return real(fd, buffer, size, offset);
}

ssize_t read(int fd, void* buffer, size_t size) {
  sendAndWait("read", fd);
  static const auto real = next<ssize_t(int, void*, size_t)>("read");
  return real(fd, buffer, size);
}

ssize_t pwrite(int fd, const void* bytes, size_t size, off_t offset) {
  sendAndWait("pwrite", fd);
  static const auto real = next<ssize_t(int, const void*, size_t, off_t)>("pwrite");
  return real(fd, bytes, size, offset);
}

ssize_t pwrite64(int fd, const void* bytes, size_t size, off64_t offset) {
  sendAndWait("pwrite", fd);
  static const auto real = next<ssize_t(int, const void*, size_t, off64_t)>("pwrite64");
  return real(fd, bytes, size, offset);
}

int fsync(int fd) {
  sendAndWait("fsync", fd);
  static const auto real = next<int(int)>("fsync");
  return real(fd);
}

int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to,
              unsigned flags) {
  const bool isExchange = (flags & 2) != 0;  // RENAME_EXCHANGE
  if (isChosen(isExchange ? "exchange" : "rename")) send();
  static const auto real = next<int(int, const char*, int, const char*, unsigned)>("renameat2");
  return real(fromDirectory, from, toDirectory, to, flags);
}

int rename(const char* from, const char* to) {
  if (isChosen("rename")) send();
  static const auto real = next<int(const char*, const char*)>("rename");
  return real(from, to);
}
}
