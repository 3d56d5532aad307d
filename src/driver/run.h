// One run of orxrestore, from banner to exit code.
#pragma once

#include "restore/operations.h"

namespace orx {

// The operation of each mode.
struct Operations {
  int (*replace)() = overrideDB;
  int (*merge)() = mergeDB;
  int (*useCount)() = orx::useCount;
};

// Prints the banner, reads the command line and runs the one operation that it asks for. Returns
// the exit code of the process. When memory runs out, everything that the run holds is released
// unpublished, one line on standard error says so, and the result is exitFailed.
// The line says so when the database has its new records already.
[[nodiscard]] int run(int argc, char* const argv[], const Operations& operations = {});

// The end of a run in which a library got no memory and cannot tell: the same line and exit code.
[[noreturn]] void endOutOfMemory();

}  // namespace orx
