#include <unistd.h>

#include <clocale>

#include "driver/run.h"
#include "platform/file.h"
#include "platform/interruption.h"
#include "platform/locale.h"
#include "platform/process.h"
#include "terminal/progress_line.h"

namespace {

void sayInterrupted(bool published) {
  orx::progressLine().eraseForGood();
  orx::writeIfTaken(STDERR_FILENO,
                    published ? "orxrestore: interrupted: the database is already changed, "
                                "completely; \"orxkdb undo\" takes it back\n"
                              : "orxrestore: interrupted: the database is unchanged\n");
}

}  // namespace

int main(int argc, char* argv[]) {
  orx::prepareProcess();
  orx::awaitInterruption(sayInterrupted);
  orx::prepareLocale(orx::endOutOfMemory);
  (void)std::setlocale(LC_CTYPE, "");  // texts come in the code page of the operator's terminal
  return orx::run(argc, argv);
}
