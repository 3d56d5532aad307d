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
[[nodiscard]] int run(int argc, char* const argv[], const Operations& operations = {});

}  // namespace orx
