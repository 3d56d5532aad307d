// Hints: what a run's outcome means, and the next command to type, on standard error.
#pragma once

#include <string>
#include <vector>

#include "restore/restore_settings.h"
#include "restore/run_report.h"

namespace orx {

struct Hint {
  std::string what;  // one sentence; names files by their absolute paths
  std::string next;  // a command, ready to type
};

// What is known of a run when it has ended.
struct RunOutcome {
  int exitCode = 0;
  bool published = false;        // the database was changed
  bool messagesMissing = false;  // there is no message bundle in the current directory
  RestoreSettings settings;
  RunReport report;
};

// In the order in which they are to be followed; none when there is nothing to say. Looks at the
// files that `outcome` names, relative to the current directory, and changes none.
[[nodiscard]] std::vector<Hint> hintsFor(const RunOutcome& outcome);

// Prints the hints of this process's run when it has ended with `exitCode`, behind what it printed
// on standard output:
//   orxrestore: WHAT
//     next: COMMAND
void giveHints(int exitCode);

}  // namespace orx
