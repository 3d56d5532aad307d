#include <fcntl.h>
#include <unistd.h>

#include "orxkdb/program.h"
#include "platform/process.h"

namespace {

// What a subcommand writes into an output that the caller closed has to fail, not to vanish.
void refuseOutput() {
  const int readOnly = open("/dev/null", O_RDONLY);
  (void)dup2(readOnly, STDOUT_FILENO);
  (void)close(readOnly);
}

}  // namespace

int main(int argc, char* argv[]) {
  const bool outputIsClosed = fcntl(STDOUT_FILENO, F_GETFD) == -1;
  orx::prepareProcess();
  if (outputIsClosed) refuseOutput();
  return orx::orxkdb::run(argc, argv);
}
