// One run of orxrestore, from banner to exit code.
#pragma once

#include "restore/operations.h"

namespace orx {

// The operation of each mode; tests put others in.
struct Operations {
  int (*replace)() = overrideDB;
  int (*merge)() = mergeDB;
  int (*useCount)() = orx::useCount;
};

// Prints the banner, reads the command line, runs the one operation that it asks for and prints the
// hints to its outcome. Returns the exit code of the process (restore/exit_codes.h). When memory
// runs out, everything that the run holds is released unpublished, one line on standard error says
// so, and whether the database has its new records already; the result is exitFailed then. Once for
// a process.
[[nodiscard]] int run(int argc, char* const argv[], const Operations& operations = {});

// The end of a run in which a library got no memory and cannot tell: the same line and exit code.
// For any thread, but not within a CriticalStep (platform/interruption.h).
[[noreturn]] void endOutOfMemory();

}  // namespace orx
