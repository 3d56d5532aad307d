#include <fcntl.h>
#include <unistd.h>

#include "orxkdb/program.h"
#include "platform/file.h"
#include "platform/interruption.h"
#include "platform/process.h"
#include "terminal/progress_line.h"

namespace {

// What a subcommand writes into an output that the caller closed has to fail, not to vanish.
void refuseOutput() {
  const int readOnly = open("/dev/null", O_RDONLY);
  (void)dup2(readOnly, STDOUT_FILENO);
  (void)close(readOnly);
}

void sayInterrupted(bool published) {
  orx::progressLine().eraseForGood();
  orx::writeIfTaken(STDERR_FILENO,
                    published ? "orxkdb: interrupted, the result has its name already, look at "
                                "it before you run this again\n"
                              : "orxkdb: interrupted, no database and no file was changed, run "
                                "this again\n");
}

}  // namespace

int main(int argc, char* argv[]) {
  const bool outputIsClosed = fcntl(STDOUT_FILENO, F_GETFD) == -1;
  orx::prepareProcess();
  if (outputIsClosed) refuseOutput();
  orx::awaitInterruption(sayInterrupted);
  return orx::orxkdb::run(argc, argv);
}
