#include "platform/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace orx {

namespace {

// open() takes the lowest free number, which is `stream` when those below it are open.
void occupy(int stream) {
  if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) (void)open("/dev/null", O_RDWR);
}

}  // namespace

void prepareProcess() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) occupy(stream);
  (void)std::signal(SIGPIPE, SIG_IGN);
  (void)std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace orx
